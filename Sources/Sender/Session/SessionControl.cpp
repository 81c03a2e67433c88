#include "Sender/Session/SessionControl.h"

#include "Sender/PlaybackVerbs.h"
#include "Sender/Session/QueueControl.h"
#include "Sender/Session/SessionPlayControl.h"

using namespace std::chrono_literals;

namespace velmora {

SessionControl::SessionControl(Clock& clock, SessionRoad road, EncryptedSession::Manner manner)
    : clock_(clock), road_(std::move(road)), manner_(std::move(manner)) {}

void SessionControl::renewSession() {
    if (session_) session_->close();
    session_ = EncryptedSession::make(clock_, road_, manner_);
    // The session ends before this object does.
    session_->onEvent([this](const QVariantMap& message) { hear(message); });
    session_->onEnded([this](const ConnectionError& error) { sessionEnded(error); });
}

QHostAddress SessionControl::localAddress() const {
    return session_ ? session_->localAddress() : QHostAddress();
}

QHostAddress SessionControl::peerAddress() const {
    return session_ ? session_->peerAddress() : QHostAddress();
}

void SessionControl::close() {
    closed_ = true;
    onEvent({});
    if (session_) session_->close();
}

void SessionControl::abandon() {
    if (session_) session_->abandon();  // with the session, its movie ends
    close();
}

QCoro::Task<VideoControl::Outcome> SessionControl::stopAndTearDown() {
    const auto self = shared_from_this();
    const auto session = session_;
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    session->stopHeartbeat();
    constexpr Clock::Duration stopDeadline = 2s;
    const Request request = stopRequest();
    const Connection::Answer answer = co_await session->send(request, stopDeadline);
    if (closed_) co_return std::unexpected(ConnectionError{});
    co_await session->tearDown();
    co_return PlaybackVerbs::outcomeOf(answer);
}

std::shared_ptr<VideoControl> makeSessionControl(Clock& clock, const std::shared_ptr<Access>& access,
                                                 Handover handover) {
    SessionRoad road = SessionRoad::through(access);
    if (handover == Handover::playQueue) return QueueControl::make(clock, std::move(road));
    return SessionPlayControl::make(clock, std::move(road));
}

}  // namespace velmora
