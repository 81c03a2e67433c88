#include "Sender/RemotePlayback.h"

#include "Sender/ControlFactory.h"
#include "Sender/CredentialStore.h"
#include "Sender/NegotiatedControl.h"
#include "Sender/PlaybackSession.h"

#include <utility>

namespace velmora {

namespace {

RemotePlayback::World realWorld(Clock& clock, MediaServer& server, const ReceiverMemory& memory) {
    const auto make = [&clock](const Approach& approach, std::shared_ptr<Access> access) {
        return makeControl(clock, approach, std::move(access));
    };
    return {
        .control = [&clock, memory, make](const Receiver& receiver) -> std::shared_ptr<VideoControl> {
            return NegotiatedControl::make(clock, receiver, memory, make);
        },
        .publish = [&server](const QString& path, const QHostAddress& receiver,
                             const TrackChoice& tracks) { return server.publish(path, receiver, tracks); },
        .mediaPort = server.port()};
}

}  // namespace

RemotePlayback::RemotePlayback(Clock& clock, MediaServer& server, const ReceiverMemory& memory,
                               QObject* parent)
    : RemotePlayback(clock, realWorld(clock, server, memory), parent) {}

RemotePlayback::RemotePlayback(Clock& clock, MediaServer& server, QObject* parent)
    : RemotePlayback(clock, server, ReceiverMemory(), parent) {}

RemotePlayback::RemotePlayback(Clock& clock, World world, QObject* parent)
    : QObject(parent), clock_(clock), world_(std::move(world)) {}

RemotePlayback::~RemotePlayback() {
    if (session_) session_->abandon();
}

void RemotePlayback::play(const Receiver& receiver, const Item& item) {
    start(std::make_shared<PlaybackSession>(clock_, world_, receiver, item));
}

void RemotePlayback::reattach() {
    const Phase phase = state().phase;
    if (phase == Phase::dropped || phase == Phase::failed) start(session_->again());
}

void RemotePlayback::start(std::shared_ptr<PlaybackSession> next) {
    const auto previous = std::exchange(session_, std::move(next));
    session_->start(previous, [this] { scheduleChange(); });
    scheduleChange();
}

void RemotePlayback::supply(const QString& secret) {
    if (session_) session_->supply(secret);
}

void RemotePlayback::pause() {
    if (session_) session_->pause();
}

void RemotePlayback::resume() {
    if (session_) session_->resume();
}

void RemotePlayback::chooseTracks(const TrackChoice& tracks) {
    if (session_) session_->chooseTracks(tracks);
}

void RemotePlayback::seek(double seconds) {
    if (session_) session_->seek(seconds);
}

void RemotePlayback::stop() {
    if (session_) session_->stop();
}

RemotePlayback::State RemotePlayback::state() const {
    return session_ ? session_->state() : State();
}

void RemotePlayback::scheduleChange() {
    if (std::exchange(isChangeScheduled_, true)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isChangeScheduled_ = false;
            Q_EMIT stateChanged();
        },
        Qt::QueuedConnection);
}

}  // namespace velmora
