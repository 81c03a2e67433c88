#pragma once

#include "Sender/Session/EncryptedSession.h"
#include "Sender/VideoControl.h"

#include <memory>

namespace velmora {

/// What the two ways to hand over a movie inside an encrypted session have in common. Main thread only.
class SessionControl : public VideoControl, public std::enable_shared_from_this<SessionControl> {
  public:
    [[nodiscard]] bool isOpen() const override { return session_ && session_->isOpen(); }
    [[nodiscard]] QHostAddress localAddress() const override;
    [[nodiscard]] QHostAddress peerAddress() const override;
    void close() override;
    void abandon() override;

  protected:
    SessionControl(Clock& clock, SessionRoad road, EncryptedSession::Manner manner);

    /// A fresh session instead of the one there is, if any.
    void renewSession();
    /// The request that stops the movie.
    [[nodiscard]] virtual Request stopRequest() = 0;
    /// From the event loop.
    virtual void hear(const QVariantMap& message) = 0;
    virtual void sessionEnded(const ConnectionError& error) = 0;

    [[nodiscard]] bool isClosed() const { return closed_; }
    [[nodiscard]] Clock& clock() const { return clock_; }
    [[nodiscard]] const SessionRoad& road() const { return road_; }
    [[nodiscard]] EncryptedSession& session() const { return *session_; }
    [[nodiscard]] const std::shared_ptr<EncryptedSession>& sharedSession() const { return session_; }
    void setTimings(const QList<Timing>& timings) { manner_.timings = timings; }
    /// Sends the stop and then the end of the session, and waits for each two seconds at most.
    [[nodiscard]] QCoro::Task<Outcome> stopAndTearDown();

  private:
    Clock& clock_;
    SessionRoad road_;
    EncryptedSession::Manner manner_;
    std::shared_ptr<EncryptedSession> session_;
    bool closed_ = false;
};

/// The control of a receiver that is spoken to in an encrypted session: by `/play`, or by its play queue.
/// When getting ready fails, the error's `step` tells where; without one the receiver may have taken the
/// movie, and no other way must be tried.
[[nodiscard]] std::shared_ptr<VideoControl> makeSessionControl(Clock& clock,
                                                               const std::shared_ptr<Access>& access,
                                                               Handover handover);

}  // namespace velmora
