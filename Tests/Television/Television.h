#pragma once

#include "Sender/Message.h"
#include "Sender/Receiver.h"
#include "System/Clock.h"
#include "Television/ControlConnection.h"
#include "Television/Misbehaviour.h"
#include "Television/SimulatedPlayer.h"

#include <QHostAddress>
#include <QObject>
#include <QStringList>
#include <QTcpServer>

#include <expected>
#include <optional>

namespace velmora::test {

/// A receiver that takes video over plain HTTP, without authentication, and is strict wherever some real
/// receiver is. Lives in tests, and as a program of its own.
class Television : public QObject {
    Q_OBJECT

  public:
    struct Options {
        QString name = QStringLiteral("Television");
        QHostAddress address{QHostAddress::LocalHost};
        quint16 port = 0;  ///< 0: any
        Misbehaviours misbehaviours{};
    };

    Television(Clock& clock, Options options, QObject* parent = nullptr);

    [[nodiscard]] std::expected<void, QString> listen();
    [[nodiscard]] Receiver receiver() const;

    /// For the viewer's remote, and to see what plays.
    [[nodiscard]] SimulatedPlayer& player() { return player_; }

    /// What a sender did wrong, in the order of doing.
    [[nodiscard]] const QStringList& complaints() const { return complaints_; }
    /// Method and target of every request.
    [[nodiscard]] const QList<QByteArray>& requests() const { return requests_; }
    [[nodiscard]] int unansweredEvents() const;

  Q_SIGNALS:
    /// A line for whoever watches: what plays now, or what is wrong.
    void said(const QString& line);

  private:
    using Verb = std::optional<Response> (Television::*)(ControlConnection&, const Request&);
    struct Route {
        const char* method;
        const char* path;
        Verb verb;
    };
    static const QList<Route> routes;

    void accept();
    void closed(ControlConnection* connection);
    void dispatch(ControlConnection& connection, const Request& request);
    [[nodiscard]] std::optional<Response> answerTo(ControlConnection& connection, const Request& request);
    void reply(ControlConnection& connection, const Response& response);

    std::optional<Response> serverInfo(ControlConnection& connection, const Request& request);
    std::optional<Response> reverse(ControlConnection& connection, const Request& request);
    std::optional<Response> play(ControlConnection& connection, const Request& request);
    std::optional<Response> rate(ControlConnection& connection, const Request& request);
    std::optional<Response> scrub(ControlConnection& connection, const Request& request);
    std::optional<Response> showScrub(ControlConnection& connection, const Request& request);
    std::optional<Response> playbackInfo(ControlConnection& connection, const Request& request);
    std::optional<Response> stop(ControlConnection& connection, const Request& request);
    std::optional<Response> volume(ControlConnection& connection, const Request& request);

    void misbehaveAfterPlay();
    void tell(SimulatedPlayer::State state, const QString& reason);
    void sendEvent(const QString& state, const QString& reason);
    Response refuse(const QString& reason);
    [[nodiscard]] bool does(Misbehaviour misbehaviour) const {
        return options_.misbehaviours.contains(misbehaviour);
    }

    Clock& clock_;
    Options options_;
    QTcpServer server_;
    SimulatedPlayer player_;
    QList<ControlConnection*> connections_;
    ControlConnection* playing_ = nullptr;  // the one that brought the movie
    int failures_ = 0;
    bool silent_ = false;
    QStringList complaints_;
    QList<QByteArray> requests_;
    Clock::Timer dropping_;
    Clock::Timer falling_;
    Clock::Timer stopping_;
};

}  // namespace velmora::test
