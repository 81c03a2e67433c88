#pragma once

#include "Sender/Connection.h"
#include "Sender/EventConnection.h"
#include "Sender/Session/SessionMessages.h"
#include "Sender/Session/SessionRequests.h"
#include "Sender/Session/SessionRoad.h"
#include "Sender/VideoControl.h"

#include <QCoroTask>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// One session on one paired connection: its set-up, the channel on which the receiver reports, the sign of
/// life every two seconds, and its end. Main thread only.
///
/// One request at a time on the connection, the sign of life included: receivers drop a connection where two
/// of them meet. Whatever way a session ends that was set up, the receiver is told; one that is not may take
/// no other sender until it is restarted.
class EncryptedSession : public std::enable_shared_from_this<EncryptedSession> {
  public:
    using Outcome = VideoControl::Outcome;

    struct Manner {
        QList<Timing> timings;  ///< in the order to try them
        QByteArray userAgent;   ///< `AirPlay/550.10`
        QString sourceVersion;  ///< `550.10`
    };
    struct Stream {
        QVariantMap description;  ///< empty: see `error`
        ConnectionError error;
    };

    [[nodiscard]] static std::shared_ptr<EncryptedSession> make(Clock& clock, SessionRoad road,
                                                                Manner manner);
    /// As `abandon`.
    ~EncryptedSession();

    /// Connects, sets the session up with the first timing that the receiver takes, and opens its event
    /// channel. Fails within a bounded time; what was not achieved is ended again.
    [[nodiscard]] QCoro::Task<Outcome> open();
    [[nodiscard]] QCoro::Task<Outcome> record();
    [[nodiscard]] QCoro::Task<Stream> setUp(QVariantMap stream);
    /// Any request made by `requests`.
    [[nodiscard]] QCoro::Task<Connection::Answer> send(Request request,
                                                       Clock::Duration deadline = Connection::usualDeadline);
    void startHeartbeat();
    void stopHeartbeat();
    /// Waits for the receiver's word that the session is over, two seconds at most.
    [[nodiscard]] QCoro::Task<> tearDown();
    /// Ends every wait, and the session: politely, behind a request that is not answered yet, as long as the
    /// event loop goes on.
    void close();
    /// The same at once, whatever the receiver is about: for destructors.
    void abandon();

    [[nodiscard]] bool wasLinked() const { return wasLinked_; }  ///< connected, and trusted, at some time
    [[nodiscard]] bool isOpen() const { return connection_ && connection_->isOpen() && !ended_; }
    [[nodiscard]] QHostAddress localAddress() const;
    [[nodiscard]] QHostAddress peerAddress() const;
    /// Once connected.
    [[nodiscard]] SessionRequests& requests() { return *requests_; }
    [[nodiscard]] const QByteArray& identifier() const { return identifier_; }
    [[nodiscard]] const Secret& shared() const { return shared_; }

    /// All handlers are called from the event loop.
    /// What the receiver reports, without its envelope.
    void onEvent(std::function<void(const QVariantMap&)> handler) { eventHandler_ = std::move(handler); }
    /// Once, when the session ends by itself: `closed` by the receiver, or it stopped answering.
    void onEnded(std::function<void(const ConnectionError&)> handler) { endHandler_ = std::move(handler); }

  private:
    EncryptedSession(Clock& clock, SessionRoad road, Manner manner);

    [[nodiscard]] QCoro::Task<Outcome> link();
    [[nodiscard]] QCoro::Task<Outcome> setUp(Timing timing);
    [[nodiscard]] QCoro::Task<Outcome> negotiate();
    [[nodiscard]] QCoro::Task<Outcome> connectEvents();
    QCoro::Task<> beat();
    void listen(std::unique_ptr<Channel> channel);
    void hear(const QByteArray& body);
    void endSoon(const ConnectionError& error);
    void end(const ConnectionError& error);
    enum class Haste { polite, atOnce };
    void leave(Haste haste = Haste::polite);
    void close(Haste haste);

    Clock& clock_;
    SessionRoad road_;
    Manner manner_;
    QByteArray identifier_;
    std::unique_ptr<Connection> connection_;
    Secret shared_;
    std::optional<SessionRequests> requests_;
    SessionRoad::TimeService time_;
    quint16 eventPort_ = 0;
    std::unique_ptr<EventConnection> events_;
    Nap nap_;
    Clock::Timer nextBeat_;
    bool isReaching_ = false;  // the road is in use
    bool owesTearDown_ = false;
    bool beats_ = false;
    int missedBeats_ = 0;
    bool wasLinked_ = false;
    bool isSetUp_ = false;
    bool ended_ = false;
    bool closed_ = false;
    std::function<void(const QVariantMap&)> eventHandler_;
    std::function<void(const ConnectionError&)> endHandler_;
};

}  // namespace velmora
