#pragma once

#include "Sender/Session/MediaRemote/DataFrame.h"
#include "Sender/Session/MediaRemote/MediaRemote.h"
#include "Television/Context.h"
#include "Television/SealedSocket.h"
#include "Television/SimulatedPlayer.h"

#include <QMap>
#include <QObject>
#include <QTcpServer>

#include <memory>

namespace velmora::test {

/// The data stream of a session for remote control: says what plays, and is steered and woken.
class RemoteStream : public QObject {
    Q_OBJECT

  public:
    RemoteStream(Context& context, Secret shared, quint64 seed);

    [[nodiscard]] quint16 port() const { return server_.serverPort(); }
    void close();
    /// Nothing is sent any more.
    void fallSilent() { silent_ = true; }

  Q_SIGNALS:
    void ended();

  private:
    using Message = remote::Envelope;

    void accept();
    void receive(const QByteArray& bytes);
    [[nodiscard]] QString take(const DataFrame& frame);
    [[nodiscard]] QString takeReply(const DataFrame& frame);
    [[nodiscard]] QString take(const Message& message);
    [[nodiscard]] QString takeDeviceInfo(const Message& message);
    [[nodiscard]] QString takeCommand(const Message& message);
    [[nodiscard]] bool refusesCommands() const;
    [[nodiscard]] bool steer(int command, const remote::SendCommand& options);
    void wake();

    void introduce(int type, const std::string& identifier);
    void sendOddities();
    void tell(SimulatedPlayer::State state, const QString& reason);
    void tellPlayer(int playbackState, double position);
    void send(const Message& message) { send(MediaRemote::packed(message)); }
    void send(const QByteArray& messages);
    void expectHeartbeat();
    void fail(const QString& reason);

    Context& context_;
    Secret shared_;
    quint64 seed_;
    QTcpServer server_;
    std::unique_ptr<SealedSocket> socket_;
    DataFrameReader frames_;
    bool introduced_ = false;
    bool connected_ = false;
    bool silent_ = false;
    quint64 sequence_;
    QMap<quint64, Clock::Timer> waiting_;
    Clock::Timer dialling_;
    Clock::Timer beating_;
    Clock::Timer waking_;
};

}  // namespace velmora::test
