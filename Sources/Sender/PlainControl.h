#pragma once

#include "Sender/Access.h"
#include "Sender/Connection.h"
#include "Sender/EventConnection.h"
#include "Sender/Heartbeat.h"
#include "Sender/VideoControl.h"

#include <memory>

namespace velmora {

/// The oldest dialect: plain HTTP, one connection for the verbs, one on which the receiver reports events,
/// and for one receiver a third that shows that we are still there. Where the access asks for it, each of
/// them is proved first.
class PlainControl : public VideoControl, public std::enable_shared_from_this<PlainControl> {
  public:
    /// `handover`: `play` or `playText`.
    [[nodiscard]] static std::shared_ptr<PlainControl> make(Clock& clock, std::shared_ptr<Access> access,
                                                            Handover handover = Handover::play);
    ~PlainControl() override;

    [[nodiscard]] QCoro::Task<Outcome> open() override;
    [[nodiscard]] bool isOpen() const override { return verbs_ && verbs_->isOpen(); }
    [[nodiscard]] QHostAddress localAddress() const override;
    [[nodiscard]] QHostAddress peerAddress() const override;
    [[nodiscard]] QCoro::Task<Outcome> play(Movie movie) override;
    [[nodiscard]] QCoro::Task<Outcome> setRate(double rate) override;
    [[nodiscard]] QCoro::Task<Outcome> seek(double seconds) override;
    [[nodiscard]] QCoro::Task<Reported> playbackInfo() override;
    [[nodiscard]] QCoro::Task<Outcome> stop() override;
    void close() override;
    void abandon() override;

  private:
    PlainControl(Clock& clock, std::shared_ptr<Access> access, Handover handover);

    /// Every request to the receiver passes here.
    [[nodiscard]] QCoro::Task<Connection::Answer> send(Request request, Clock::Duration deadline);
    [[nodiscard]] QCoro::Task<Connection::Answer> get(const QByteArray& target);
    [[nodiscard]] QCoro::Task<Outcome> post(QByteArray target);
    [[nodiscard]] QCoro::Task<> openEvents();
    [[nodiscard]] QCoro::Task<> keepAlive(Response serverInfo);
    [[nodiscard]] Request request(const QByteArray& method, const QByteArray& target) const;

    Clock& clock_;
    QByteArray session_;  // one for each session, the same on all of its connections
    std::shared_ptr<Access> access_;
    Handover handover_;
    std::unique_ptr<Connection> verbs_;
    std::unique_ptr<Connection> reversing_;
    std::unique_ptr<EventConnection> events_;
    std::shared_ptr<Heartbeat> heartbeat_;
    Nap nap_;
    bool hasMovie_ = false;  // was told to play, and not to stop
    bool closed_ = false;
};

}  // namespace velmora
