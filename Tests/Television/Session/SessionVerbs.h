#pragma once

#include "Television/PlayVerbs.h"
#include "Television/SealedSocket.h"
#include "Television/Session/EventPort.h"
#include "Television/Session/QueueVerbs.h"
#include "Television/Session/RemoteStream.h"
#include "Television/Session/SetupRequest.h"
#include "Television/Session/TimingQueries.h"

#include <QObject>

#include <memory>

namespace velmora::test {

/// What a sender does on one sealed connection: sets up a session, and plays or steers in it.
class SessionVerbs : public QObject {
    Q_OBJECT

  public:
    /// `shared` is what the connection's keys come from.
    SessionVerbs(Context& context, PlayVerbs& verbs, SealedSocket& socket, Secret shared);
    ~SessionVerbs() override;

    void answer(const Request& request, const Reply& reply);
    void fallSilent();

    [[nodiscard]] bool isOpen() { return events_ && events_->isConnected(); }
    [[nodiscard]] bool hasMovie() const { return queue_ && queue_->isStarted(); }
    [[nodiscard]] bool isForRemote() const { return setup_.remoteOnly; }
    [[nodiscard]] int unansweredEvents() const { return events_ ? events_->unanswered() : 0; }

  private:
    using Verb = void (SessionVerbs::*)(const Request& request, const Reply& reply);
    struct Route {
        const char* method;
        const char* path;  ///< null: the session's own name
        Verb verb;
    };
    static const QList<Route> routes;

    void info(const Request& request, const Reply& reply);
    void setUp(const Request& request, const Reply& reply);
    void setUpSession(const QVariantMap& body, const Reply& reply);
    void setUpStream(const QVariantMap& body, const Reply& reply);
    [[nodiscard]] QVariantMap openRemote(quint64 seed);
    [[nodiscard]] QVariantMap openQueue();
    void record(const Request& request, const Reply& reply);
    void feedback(const Request& request, const Reply& reply);
    void command(const Request& request, const Reply& reply);
    void tearDown(const Request& request, const Reply& reply);
    void play(const Request& request, const Reply& reply);

    [[nodiscard]] int refusal(const SessionSetup& setup) const;
    void begin(const Reply& reply);
    void confirm(const Reply& reply);
    void tell(SimulatedPlayer::State state, const QString& reason);
    void playOldWay(const Request& request, const Reply& reply);
    void expectFeedback();
    void end();
    void blame(const Reply& reply, int status, const QString& reason);

    Context& context_;
    PlayVerbs& verbs_;
    SealedSocket& socket_;
    Secret shared_;
    SessionSetup setup_;
    std::unique_ptr<EventPort> events_;
    std::unique_ptr<TimingQueries> timing_;
    std::unique_ptr<QueueVerbs> queue_;
    std::unique_ptr<RemoteStream> remote_;
    bool recording_ = false;
    bool over_ = false;
    bool counted_ = false;  // among the remotes
    Clock::Timer holding_;  // the answer to SETUP
    Clock::Timer expecting_;
    Clock::Timer dying_;
};

}  // namespace velmora::test
