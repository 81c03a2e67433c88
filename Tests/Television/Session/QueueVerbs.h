#pragma once

#include "Television/Context.h"
#include "Television/Session/EventPort.h"
#include "Television/SimulatedPlayer.h"

#include <QObject>

namespace velmora::test {

/// The number that the queue's stream has here.
constexpr int queueStream = 7;

/// The play queue of a session: takes its messages, plays its item, and tells of it on the event port.
class QueueVerbs : public QObject {
    Q_OBJECT

  public:
    /// `sender` is where the movie has to come from.
    QueueVerbs(Context& context, EventPort& events, const QHostAddress& sender, QObject* parent = nullptr);
    ~QueueVerbs() override;

    /// The status to answer a `/command` with; 0: hang up instead.
    [[nodiscard]] int answer(const Request& request);

    /// Whether the movie was told to play.
    [[nodiscard]] bool isStarted() const { return started_; }

  Q_SIGNALS:
    void started();
    /// The session is over, as when the viewer leaves: without a word.
    void left();

  private:
    using Verb = QString (QueueVerbs::*)(const QVariantMap& message);
    struct Route {
        const char* type;
        Verb verb;
    };
    static const QList<Route> routes;

    // Each returns what is wrong with the message, if anything; it is answered 200 all the same.
    QString insert(const QVariantMap& message);
    QString setProperty(const QVariantMap& message);
    QString setRate(const QVariantMap& message);
    QString seek(const QVariantMap& message);
    QString playbackInfo(const QVariantMap& message);
    QString stop(const QVariantMap& message);

    void start(double rate);
    void tell(SimulatedPlayer::State state, const QString& reason);
    void tellEnd();
    void tellState(const QString& state, const QVariantMap& more = {});
    void tellFailure(const QString& reason);
    void playedFirst();
    [[nodiscard]] QVariantMap info() const;
    [[nodiscard]] QVariantMap item() const;
    [[nodiscard]] bool namesItem(const QVariantMap& message) const;

    Context& context_;
    EventPort& events_;
    QHostAddress sender_;
    std::optional<SimulatedPlayer::Movie> movie_;
    QStringList properties_;
    bool started_ = false;
    bool hasPlayed_ = false;
    int failures_ = 0;
    Clock::Timer dozing_;
};

}  // namespace velmora::test
