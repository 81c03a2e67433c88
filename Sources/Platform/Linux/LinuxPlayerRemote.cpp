// The player's part that plays on a television.
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/NetworkOutputContext.h"

#include <QPointer>

#include <utility>

namespace velmora {

using namespace std::chrono_literals;
using Kind = MediaGroup::Kind;
using Phase = RemotePlayback::Phase;

namespace {

// Whoever goes through the tracks one by one has the movie loaded again once.
constexpr Clock::Duration choiceSettles = 400ms;

}  // namespace

std::optional<Receiver> LinuxPlayer::television() const {
    return context_ && allowsExternal_ ? context_->television() : std::nullopt;
}

void LinuxPlayer::attach(const Receiver& receiver) {
    const double start = currentTime().value_or(0);
    isAttached_ = true;
    attachedTo_ = receiver.identifier;
    wantsAttachment_ = isDropped_ = false;
    remotePlays_ = true;
    // It may be playing, or paused, what another player began.
    awaitsRemoteRate_ = true;
    context_->output().attach(this, receiver,
                              {.file = item_->file().toLocalFile(),
                               .duration = local_->duration().value_or(0),
                               .startPosition = start,
                               .tracks = chosenTracks()});
    kept_.reset();
    follow();
}

/// Ends what this player has on a television.
void LinuxPlayer::detach() {
    choosing_.cancel();
    if (!std::exchange(isAttached_, false)) return;
    const auto chosen = television();
    const bool isStillChosen = chosen && chosen->identifier == attachedTo_;
    context_->output().release(
        this, isStillChosen ? RemoteOutput::Release::forNow : RemoteOutput::Release::forGood);
}

void LinuxPlayer::steer() {
    if (remotePlays_ == wantsToPlay_) return;
    remotePlays_ = wantsToPlay_;
    awaitsRemoteRate_ = true;
    if (wantsToPlay_)
        context_->output().resume();
    else
        context_->output().pause();
}

void LinuxPlayer::chooseThere() {
    choosing_ = clock_.after(choiceSettles, [this] { context_->output().chooseTracks(chosenTracks()); });
}

TrackChoice LinuxPlayer::chosenTracks() const {
    const auto chosen = [this](Kind kind) -> std::optional<TrackChoice::Track> {
        const int count = item_->trackCount(kind);
        const auto number = item_->selectedTrack(kind);
        // Nobody wants a movie without its sound.
        if (count == 0 || (!number && kind == Kind::audible)) return std::nullopt;
        return TrackChoice::Track{.number = number.value_or(0), .count = count};
    };
    return {.audio = chosen(Kind::audible), .subtitle = chosen(Kind::legible)};
}

/// What happens on the television has happened to this player.
void LinuxPlayer::follow() {
    if (!isAttached_) return;
    if (!context_->output().isUsedBy(this)) return lose(true);
    const RemotePlayback::State state = context_->output().state();
    switch (state.phase) {
        case Phase::playing:
        case Phase::paused:
            return followRate(state.phase == Phase::playing);
        case Phase::ended:
            return takeRemoteEnd(state.duration > 0 ? state.duration : state.position);
        case Phase::stopped:
        case Phase::takenOver:
            // Before anybody hears of it: whoever sets the context again must not fight the viewer.
            context_->setOutputDevice(std::nullopt, 0);
            return lose(false);
        case Phase::dropped:
            return lose(true);
        case Phase::failed:
            return lose(false);
        case Phase::loading:
            // It plays before it pauses, also when it loads other tracks.
            awaitsRemoteRate_ = true;
            return updateStatus();
        default:
            updateStatus();
    }
}

void LinuxPlayer::followRate(bool plays) {
    if (plays == remotePlays_) {
        awaitsRemoteRate_ = false;
    } else if (!awaitsRemoteRate_) {
        remotePlays_ = wantsToPlay_ = plays;  // with the television's own remote
    }
    const QPointer<LinuxPlayer> alive(this);
    setExternal(true);
    if (alive) updateStatus();
    if (alive) tellTime();
}

void LinuxPlayer::takeRemoteEnd(double position) {
    kept_ = position;
    detach();
    isAtEnd_ = true;
    wantsToPlay_ = false;
    const QPointer<LinuxPlayer> alive(this);
    updateStatus();
    if (alive) tellTime();
}

/// After a drop the player goes on waiting: the owner may attach again. After anything else it is paused.
void LinuxPlayer::lose(bool isDropped) {
    kept_ = currentTime();
    detach();
    wantsAttachment_ = false;
    isDropped_ = isDropped;
    wantsToPlay_ = wantsToPlay_ && isDropped;
    const QPointer<LinuxPlayer> alive(this);
    setExternal(false);
    if (alive) updateStatus();
}

void LinuxPlayer::setExternal(bool active) {
    if (std::exchange(isExternal_, active) != active) Q_EMIT externalPlaybackActiveChanged();
}

}  // namespace velmora
