// From a prepared movie to a player that plays it, and what becomes of it.
#include "Companions/Names.h"
#include "Diagnostics/Log.h"
#include "Playback/Session.h"
#include "Playback/SessionText.h"

#include <QCoreApplication>

#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Session)
};

// Seconds. Whatever is this near to the beginning may as well begin there, and a place that is lost so early
// costs the viewer nothing.
constexpr double shortestSeek = 1;
constexpr double shortestVerified = 10;

// The player, its item and their observers are still on the stack of the signal that told of a failure.
void releaseLater(std::shared_ptr<PlayerItem> item) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [item = std::move(item)] {}, Qt::QueuedConnection);
}

}  // namespace

std::shared_ptr<Player> Session::makePlayer() {
    std::shared_ptr<Player> player = world_.players.makePlayer();
    player->setAllowsExternalPlayback(true);
    if (airPlay_.context()) player->setOutputContext(airPlay_.context());
    return player;
}

void Session::startPlayback(const Start& start) {
    player_->pause();
    detachObservers();
    player_->replaceCurrentItem(nullptr);
    abandonHandover();
    setTimeline(start.time.value_or(0), memory_.savedDuration(start.source).value_or(duration_));
    setHandingOverTo(airPlay_.deviceName());
    if (handingOverTo_)
        handOver(start);
    else
        adopt(player_, start, Progress::empty);
}

void Session::adopt(std::shared_ptr<Player> player, const Start& start, Progress progress) {
    player_.swap(player);
    if (player_ != player) Q_EMIT playerChanged();
    player.reset();
    observePlayer();
    std::shared_ptr<PlayerItem> item;
    if (progress == Progress::loadedAndSought) item = player_->currentItem();
    if (!item) {
        item = world_.players.makeItem(start.file);
        preselectTracks(item, Place::here);
    }
    takeItem(item, start.source);
    noteLength(*item);
    clearTracks();
    loadTracks(item);
    if (progress == Progress::empty && start.time && *start.time > shortestSeek)
        player_->seek(*start.time, {.before = Player::Tolerance::anywhere, .after = 0}, [](bool) {});
    if (start.time && *start.time > shortestVerified) verifyResume(*start.time);
    if (start.play) {
        player_->play();
        nudgeIfStillPaused();
    }
    const QString from = start.time ? u" from %1s"_s.arg(SessionText::wholeSeconds(*start.time)) : QString();
    logger().notice((start.play ? u"playing "_s : u"ready, paused "_s) + Names::fileName(start.file) +
                    u" on "_s + airPlay_.deviceName().value_or(u"this Mac"_s) + from + u" external="_s +
                    SessionText::truth(player_->isExternalPlaybackActive()));
    if (poster_.isNull()) capturePoster(start.time);
    // It may have failed before anybody listened.
    if (item->status() == PlayerItem::Status::failed) itemStatusChanged(*item, start.source);
}

void Session::takeItem(const std::shared_ptr<PlayerItem>& item, const QUrl& source) {
    PlayerItem* const observed = item.get();
    itemObservers_ = {
        connect(observed, &PlayerItem::failedToPlayToEnd, this,
                [this, source](const QString& error) { playbackFailed(error, source); }),
        connect(observed, &PlayerItem::statusChanged, this,
                [this, observed, source] { itemStatusChanged(*observed, source); }),
    };
    if (player_->currentItem() != item) player_->replaceCurrentItem(item);
}

// Also of a movie that no television took.
void Session::noteLength(const PlayerItem& item) {
    setTimeline(currentTime_, item.duration().value_or(duration_));
}

void Session::itemStatusChanged(const PlayerItem& item, const QUrl& source) {
    noteLength(item);
    const QString error = item.error();
    logger().notice(u"item status %1 error=%2"_s.arg(QString::number(static_cast<int>(item.status())),
                                                     error.isEmpty() ? u"none"_s : error));
    if (item.status() == PlayerItem::Status::failed) playbackFailed(error, source);
}

void Session::playbackFailed(const QString& error, const QUrl& source) {
    if (!phase_.ready()) return;
    releaseLater(player_->currentItem());
    stopPlayback();
    const QString message = error.isEmpty() ? Texts::tr("The movie stopped unexpectedly.") : error;
    enter(Phase::Failure{.source = source, .message = message, .canTranscode = !lastWasTranscode_});
}

void Session::stopPlayback() {
    abandonHandover();
    setHandingOverTo({});
    player_->pause();
    detachObservers();
    player_->replaceCurrentItem(nullptr);
    airPlay_.endPlayback();
    setOnAppleTV(false);
}

void Session::followRoute(const std::optional<QString>& deviceName) {
    const auto* playback = phase_.ready();
    if (!playback) return;
    startPlayback({.file = playback->file,
                   .source = playback->source,
                   .time = placeToGoOn(),
                   .play = deviceName.has_value()});
}

std::optional<double> Session::placeToGoOn() const {
    // A player that is still on its way to its start, or has given up its item for a handover, is not where
    // the viewer is.
    const auto item = player_->currentItem();
    if (!item || item->status() != PlayerItem::Status::readyToPlay) return currentTime_;
    return player_->currentTime();
}

void Session::retryHandover() {
    const auto* playback = phase_.ready();
    if (!playback || !airPlay_.deviceName()) return;
    constexpr double justBegun = 5;  // seconds; a player that lost its place says so too
    std::optional<double> time = player_->currentTime();
    if (!time || *time <= justBegun) time = memory_.savedPosition(playback->source);
    startPlayback({.file = playback->file, .source = playback->source, .time = time, .play = true});
}

}  // namespace velmora
