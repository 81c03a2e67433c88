#pragma once

#include "Television/Context.h"
#include "Television/SealedSocket.h"

#include <QObject>
#include <QQueue>
#include <QTcpServer>
#include <QVariant>

#include <memory>

namespace velmora::test {

/// The port of a session on which the sender is asked and told things, and has to answer every time.
class EventPort : public QObject {
    Q_OBJECT

  public:
    /// `shared` is what the control connection's keys come from.
    EventPort(Context& context, Secret shared, QObject* parent = nullptr);

    [[nodiscard]] quint16 port() const { return port_; }
    /// Also notices a connection of this very moment.
    [[nodiscard]] bool isConnected();
    [[nodiscard]] int unanswered() const { return int(waiting_.size()); }
    /// In plain words, an orderly end.
    void close();
    /// Nothing is sent any more.
    void fallSilent() { silent_ = true; }

    /// As the receiver itself speaks.
    void sendBare(const QVariantMap& body);
    /// As its player speaks.
    void send(const QVariantMap& inner) { sendTogether({command(inner)}); }
    /// What some receiver or other sends, and what changes nothing: it has to be answered like all else.
    void sendOddities();

  Q_SIGNALS:
    void connected();
    /// By the sender, or because it failed to answer.
    void ended();

  private:
    struct Waiting {
        QByteArray number;
        Clock::Timer deadline;
    };
    void open();
    void accept();
    void receive(const QByteArray& bytes);
    [[nodiscard]] QString complaint(const Response& answer);
    [[nodiscard]] Request event(const QByteArray& body);
    [[nodiscard]] Request command(const QVariantMap& inner);
    void sendTogether(const QList<Request>& events);
    void fail(const QString& reason);

    Context& context_;
    Secret shared_;
    QTcpServer server_;
    quint16 port_ = 0;
    std::unique_ptr<SealedSocket> socket_;
    MessageReader<Response> answers_;
    QQueue<Waiting> waiting_;
    int number_ = 0;
    bool silent_ = false;
    Clock::Timer opening_;
    Clock::Timer dialling_;
};

}  // namespace velmora::test
