// A handover is unreliable: what is looked at again some seconds after it, and put right.
#include "Diagnostics/Log.h"
#include "Playback/Session.h"
#include "Playback/SessionText.h"

#include <array>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr std::array<Clock::Duration, 2> resumeChecks{3s, 5s};
constexpr double tolerableDrift = 20;  // seconds

constexpr std::array<Clock::Duration, 4> nudgeDelays{1500ms, 1s, 1s, 1s};
constexpr Clock::Duration nudgeRestsAfterDrop = 1s;

constexpr Clock::Duration reattachDelay = 50ms;
constexpr Clock::Duration stallGuardDelay = 3s;
constexpr Clock::Duration longestFlicker = 1s;

}  // namespace

// Only a fall back is put right: whoever is beyond the target has moved there.
QCoro::Task<> Session::verifyResume(double target) {
    const Ticket ticket(this);
    const int seek = seekGeneration_;
    for (const Clock::Duration delay : resumeChecks) {
        const Completion<bool> pause = waits_.sleep(delay);
        co_await pause;
        // Whoever has sought meanwhile wants to be there.
        if (!ticket.isForThisPlayer() || seekGeneration_ != seek) co_return;
        const std::optional<double> time = player_->currentTime();
        if (!time || target - *time <= tolerableDrift) continue;
        logger().notice(u"resume drifted: at %1s, wanted %2s; seeking back"_s.arg(
            SessionText::wholeSeconds(*time), SessionText::wholeSeconds(target)));
        const Player::Seeked landed = [](bool) {};
        player_->seek(target, Player::Tolerance(), landed);
        co_return;
    }
}

QCoro::Task<> Session::nudgeIfStillPaused() {
    const Ticket ticket(this);
    const int toggles = toggles_;
    int attempt = 0;
    for (const Clock::Duration delay : nudgeDelays) {
        ++attempt;
        const Completion<bool> pause = waits_.sleep(delay);
        co_await pause;
        // A viewer who paused it meanwhile wants it paused.
        if (!ticket.isForThisPlayer() || !airPlay_.deviceName() || toggles_ != toggles) co_return;
        if (player_->timeControlStatus() != Player::TimeControlStatus::paused) co_return;
        // While the device comes and goes, playing would go on here.
        if (lastExternalDrop_ && world_.clock.now() - *lastExternalDrop_ < nudgeRestsAfterDrop) continue;
        logger().notice(
            u"nudge: player still paused after handover, playing again (attempt %1)"_s.arg(attempt));
        player_->play();
        co_return;
    }
}

QCoro::Task<> Session::recoverExternalPlayback() {
    if (!airPlay_.deviceName()) co_return;
    const Ticket ticket(this);
    lastExternalDrop_ = world_.clock.now();
    const Completion<bool> pause = waits_.sleep(reattachDelay);
    co_await pause;
    if (!ticket.isForThisPlayer() || !airPlay_.deviceName() || player_->isExternalPlaybackActive()) co_return;
    logger().notice(u"re-attaching output context"_s);
    player_->setOutputContext(airPlay_.context());
}

// The movie must not run on unseen, or on this computer's screen, while the device shows nothing.
QCoro::Task<> Session::pauseIfStalled() {
    const Ticket ticket(this);
    do {
        const Completion<bool> pause = waits_.sleep(stallGuardDelay);
        co_await pause;
        if (!ticket.isForThisPlayer() || !airPlay_.deviceName() || handingOverTo_) co_return;
        if (player_->isExternalPlaybackActive()) co_return;
        if (player_->timeControlStatus() == Player::TimeControlStatus::paused) co_return;
    } while (airPlay_.awaitsViewer());
    logger().notice(u"stalled: "_s + airPlay_.deviceName().value_or(u"TV"_s) +
                    u" did not take the video; paused"_s);
    player_->pause();
}

// Shorter drops do not flicker in the window.
QCoro::Task<> Session::noteLastingDrop() {
    const Ticket ticket(this);
    const Completion<bool> pause = waits_.sleep(longestFlicker);
    co_await pause;
    if (ticket.isForThisPlayer() && !player_->isExternalPlaybackActive()) setOnAppleTV(false);
}

}  // namespace velmora
