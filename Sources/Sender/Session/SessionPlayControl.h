#pragma once

#include "Sender/Session/PlayerState.h"
#include "Sender/Session/SessionControl.h"

namespace velmora {

/// `/play` and its sister verbs, inside an encrypted session.
class SessionPlayControl : public SessionControl {
  public:
    [[nodiscard]] static std::shared_ptr<SessionPlayControl> make(Clock& clock, SessionRoad road);
    ~SessionPlayControl() override;

    [[nodiscard]] QCoro::Task<Outcome> open() override;
    [[nodiscard]] QCoro::Task<Outcome> play(Movie movie) override;
    [[nodiscard]] QCoro::Task<Outcome> setRate(double rate) override;
    [[nodiscard]] QCoro::Task<Outcome> seek(double seconds) override;
    [[nodiscard]] QCoro::Task<Reported> playbackInfo() override;
    [[nodiscard]] QCoro::Task<Outcome> stop() override;

  protected:
    [[nodiscard]] Request stopRequest() override;
    void hear(const QVariantMap& message) override;
    void sessionEnded(const ConnectionError& error) override;

  private:
    SessionPlayControl(Clock& clock, SessionRoad road);

    [[nodiscard]] QCoro::Task<Outcome> sendPlay(Movie movie);
    [[nodiscard]] QCoro::Task<Outcome> setProperty(QByteArray name, QVariant value);
    [[nodiscard]] QCoro::Task<Outcome> post(QByteArray target);
    [[nodiscard]] Request verb(const QByteArray& method, const QByteArray& target);

    Nap nap_;
    PlayerState player_;
    QString uuid_;
    bool hasPlayed_ = false;
    bool rateIsSet_ = false;  // by `play` itself
};

}  // namespace velmora
