#include "Sender/RemotePlayback.h"

#include "Sender/PlainControl.h"
#include "Sender/PlaybackSession.h"

#include <utility>

namespace velmora {

namespace {

RemotePlayback::World realWorld(Clock& clock, MediaServer& server) {
    return {.control = [&clock](const Receiver& receiver) -> std::shared_ptr<VideoControl> {
                return PlainControl::make(clock, receiver);
            },
            .publish = [&server](const QString& path,
                                 const QHostAddress& receiver) { return server.publish(path, receiver); },
            .mediaPort = server.port()};
}

}  // namespace

RemotePlayback::RemotePlayback(Clock& clock, MediaServer& server, QObject* parent)
    : RemotePlayback(clock, realWorld(clock, server), parent) {}

RemotePlayback::RemotePlayback(Clock& clock, World world, QObject* parent)
    : QObject(parent), clock_(clock), world_(std::move(world)) {}

RemotePlayback::~RemotePlayback() {
    if (session_) session_->abandon();
}

void RemotePlayback::play(const Receiver& receiver, const Item& item) {
    const auto previous =
        std::exchange(session_, std::make_shared<PlaybackSession>(clock_, world_, receiver, item));
    session_->start(previous, [this] { scheduleChange(); });
    scheduleChange();
}

void RemotePlayback::pause() {
    if (session_) session_->pause();
}

void RemotePlayback::resume() {
    if (session_) session_->resume();
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
