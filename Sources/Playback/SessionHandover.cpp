// Onto a television: a fresh player for each attempt, at its place before it plays, adopted once the
// television shows the movie.
#include "Diagnostics/Log.h"
#include "Playback/Session.h"
#include "Playback/SessionText.h"

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int attempts = 2;
constexpr Clock::Duration betweenAttempts = 2s;

constexpr int statusPolls = 50;
constexpr Clock::Duration statusPollInterval = 100ms;

constexpr int externalPolls = 15;
constexpr Clock::Duration externalPollInterval = 500ms;

constexpr double shortestSeek = 1;  // seconds

PlayerItem::Status statusOf(const Player& player) {
    const auto item = player.currentItem();
    return item ? item->status() : PlayerItem::Status::unknown;
}

/// The file may have been replaced by a shorter one since the place was remembered.
bool isBehindTheEnd(const Player& player, const std::optional<double>& time) {
    const auto item = player.currentItem();
    const double duration = item ? item->duration().value_or(0) : 0;
    return time && duration > 0 && *time >= duration;
}

QString outcomeOf(const Player& player) {
    const auto item = player.currentItem();
    const QString status = item ? QString::number(static_cast<int>(item->status())) : u"-1"_s;
    const QString error = item && !item->error().isEmpty() ? item->error() : u"-"_s;
    return u"external=%1 type=%2 status=%3 err=%4"_s.arg(
        SessionText::truth(player.isExternalPlaybackActive()),
        QString::number(player.externalPlaybackType().value_or(-1)), status, error);
}

void noteAttempt(int number, const QString& what) {
    logger().notice(u"AirPlay attempt "_s + QString::number(number) + u": "_s + what);
}

}  // namespace

QCoro::Task<> Session::handOver(Start start) {
    const Ticket ticket(this);
    for (int number = 1; number <= attempts; ++number) {
        if (number > 1) {
            const Completion<bool> pause = handoverWaits_.sleep(betweenAttempts);
            co_await pause;
            if (!ticket.isForThisStart()) co_return;
        }
        co_await attempt(start, number);
        if (!ticket.isForThisStart()) co_return;
        const bool isTaken = incomingPlayer_->isExternalPlaybackActive();
        incomingPlayer_->pause();
        if (isTaken) break;
        // The last attempt's player stays: the viewer may try again from where it is.
        if (number < attempts) incomingPlayer_->replaceCurrentItem(nullptr);
    }
    std::shared_ptr<Player> player = std::exchange(incomingPlayer_, nullptr);
    player->setPausesAtEnd(true);
    player->setPreventsDisplaySleep(true);
    if (isBehindTheEnd(*player, start.time)) start.time.reset();
    start.play = true;
    adopt(std::move(player), start, Progress::loadedAndSought);
    if (ticket.isForThisStart()) setHandingOverTo({});
}

QCoro::Task<> Session::attempt(Start start, int number) {
    const Ticket ticket(this);
    incomingPlayer_ = makePlayer();
    const std::shared_ptr<PlayerItem> item = world_.players.makeItem(start.file);
    preselectTracks(item, Place::television);
    incomingPlayer_->replaceCurrentItem(item);
    if (start.time && *start.time > shortestSeek) {
        co_await seekBeforePlaying(*start.time, number);
        if (!ticket.isForThisStart()) co_return;
    }
    incomingPlayer_->play();
    noteAttempt(number, u"fresh player created, waiting for external playback"_s);
    co_await waitForExternalPlayback();
    if (ticket.isForThisStart()) noteAttempt(number, outcomeOf(*incomingPlayer_));
}

QCoro::Task<> Session::seekBeforePlaying(double target, int number) {
    const Ticket ticket(this);
    for (int poll = 0; poll < statusPolls && statusOf(*incomingPlayer_) == PlayerItem::Status::unknown;
         ++poll) {
        const Completion<bool> pause = handoverWaits_.sleep(statusPollInterval);
        co_await pause;
        if (!ticket.isForThisStart()) co_return;
    }
    if (isBehindTheEnd(*incomingPlayer_, target)) {
        noteAttempt(number,
                    u"%1s is behind the end, from the beginning"_s.arg(SessionText::wholeSeconds(target)));
        co_return;
    }
    bool hasLanded = false;
    if (statusOf(*incomingPlayer_) == PlayerItem::Status::readyToPlay) {
        const Completion<bool> landing = handoverWaits_.answer();
        const Player::Tolerance exactly{.before = 0, .after = 0};
        const Player::Seeked landed = [landing](bool finished) { landing.complete(finished); };
        incomingPlayer_->seek(target, exactly, landed);
        hasLanded = co_await landing;
        if (!ticket.isForThisStart()) co_return;
    }
    const double time = incomingPlayer_->currentTime().value_or(0);
    noteAttempt(number, u"pre-seek to %1s landed=%2 at %3s"_s.arg(SessionText::wholeSeconds(target),
                                                                  SessionText::truth(hasLanded),
                                                                  SessionText::wholeSeconds(time)));
}

QCoro::Task<> Session::waitForExternalPlayback() {
    const Ticket ticket(this);
    for (int poll = 0; poll < externalPolls && !incomingPlayer_->isExternalPlaybackActive(); ++poll) {
        const Completion<bool> pause = handoverWaits_.sleep(externalPollInterval);
        co_await pause;
        if (!ticket.isForThisStart()) co_return;
        // The time counts from when the viewer has done their part.
        if (airPlay_.awaitsViewer()) poll = -1;
    }
}

void Session::abandonHandover() {
    ++swapGeneration_;
    handoverWaits_.end();
    // The television must be free of it before anything else is sent there.
    if (const std::shared_ptr<Player> incoming = std::exchange(incomingPlayer_, nullptr)) {
        incoming->pause();
        incoming->replaceCurrentItem(nullptr);
    }
}

}  // namespace velmora
