#pragma once

#include "Sender/Session/PlayerState.h"
#include "Sender/Session/RemoteControl.h"
#include "Sender/Session/SessionControl.h"

namespace velmora {

/// The movie as an item of the receiver's play queue, which newer receivers take instead of `/play`.
///
/// The queue cannot be polled as `/playback-info` can: positions come from what the receiver tells by itself,
/// from its remote control where it has one, and from a question a second where it answers that. Between two
/// of them the clock goes on.
class QueueControl : public SessionControl {
  public:
    [[nodiscard]] static std::shared_ptr<QueueControl> make(Clock& clock, const SessionRoad& road);
    ~QueueControl() override;

    [[nodiscard]] QCoro::Task<Outcome> open() override;
    [[nodiscard]] QCoro::Task<Outcome> play(Movie movie) override;
    [[nodiscard]] QCoro::Task<Outcome> setRate(double rate) override;
    [[nodiscard]] QCoro::Task<Outcome> seek(double seconds) override;
    [[nodiscard]] QCoro::Task<Reported> playbackInfo() override;
    [[nodiscard]] QCoro::Task<Outcome> stop() override;
    void close() override;
    void abandon() override;

  protected:
    [[nodiscard]] Request stopRequest() override;
    void hear(const QVariantMap& message) override;
    void sessionEnded(const ConnectionError& error) override;

  private:
    QueueControl(Clock& clock, const SessionRoad& road);

    [[nodiscard]] QCoro::Task<Outcome> openRemote();
    [[nodiscard]] QCoro::Task<Outcome> openQueue();
    [[nodiscard]] QCoro::Task<Outcome> insert(Movie movie);
    [[nodiscard]] QCoro::Task<Outcome> start(Movie movie);
    [[nodiscard]] QCoro::Task<Outcome> command(QVariantMap content);
    [[nodiscard]] QCoro::Task<Outcome> ask();
    [[nodiscard]] QCoro::Task<bool> commandRemote(MediaRemote::Command command,
                                                  std::optional<double> position);
    [[nodiscard]] Request commandRequest(const QVariantMap& content);
    [[nodiscard]] QList<Timing> timings() const;
    [[nodiscard]] bool isAsking() const;

    ReceiverKind kind_;
    std::shared_ptr<RemoteControl> remote_;
    QByteArray streamId_;
    PlayerState player_;
    QString uuid_;
    bool hasInserted_ = false;
    bool rateIsSet_ = false;  // by `play` itself
    int questions_ = 0;
    std::optional<Clock::Instant> askedAt_;
    bool answersQuestions_ = true;
    std::optional<ConnectionError> lost_;
};

}  // namespace velmora
