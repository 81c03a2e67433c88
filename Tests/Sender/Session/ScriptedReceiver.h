#pragma once

#include "Sender/Message.h"
#include "Sender/Pairing/SecureFrames.h"
#include "Sender/Session/MediaRemote/DataFrame.h"
#include "Sender/Session/MediaRemote/MediaRemote.h"
#include "Sender/Session/SessionRoad.h"
#include "Support/VirtualClock.h"

#include <QPointer>
#include <QStringList>
#include <QVariantMap>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace velmora::test {

/// One end of a connection without sockets.
class MemoryChannel : public Channel {
    Q_OBJECT

  public:
    std::function<void(const QByteArray&)> written;

    void write(const QByteArray& bytes) override {
        if (isOpen_) written(bytes);
    }
    void close() override { isOpen_ = false; }
    [[nodiscard]] bool isOpen() const override { return isOpen_; }
    [[nodiscard]] QHostAddress localAddress() const override {
        return QHostAddress(QStringLiteral("192.0.2.1"));
    }
    [[nodiscard]] QHostAddress peerAddress() const override {
        return QHostAddress(QStringLiteral("192.0.2.2"));
    }
    void feed(const QByteArray& bytes) {
        if (isOpen_) Q_EMIT received(bytes);
    }
    void end() {
        if (std::exchange(isOpen_, false)) Q_EMIT closed({.detail = QStringLiteral("closed there")});
    }

  private:
    bool isOpen_ = true;
};

/// The receiver's end of a channel of its own, with the other side's keys.
struct SealedEnd {
    SealedEnd(MemoryChannel& memory, const ChannelKeys& senders)
        : channel(&memory), opener(senders.encrypt), sealer(senders.decrypt) {}
    void send(const QByteArray& bytes) {
        if (channel) channel->feed(sealer.seal(bytes));
    }

    QPointer<MemoryChannel> channel;
    FrameOpener opener;
    FrameSealer sealer;
    MessageReader<Response> answers;
    DataFrameReader frames;
};

/// A receiver without sockets, in virtual time: notes every request as "connection verb", answers it
/// `latency` later as scripted, and otherwise kindly.
class ScriptedReceiver {
  public:
    static constexpr int silence = 0;
    static constexpr int closing = -1;

    explicit ScriptedReceiver(VirtualClock& clock) : clock_(clock) {}

    [[nodiscard]] SessionRoad road(const QString& model);

    Receiver receiver;
    std::map<QString, std::deque<int>> statuses;  ///< by verb: those of its next requests
    std::map<QString, QByteArray> bodies;         ///< by verb: of the answer
    std::map<QString, Clock::Duration> latencies;
    int eventRefusals = 0;  ///< the event port is not open that many times
    int devices = 1;        ///< 0: asleep; below: does not even introduce itself
    int remoteStatus = 0;   ///< of a remote control's commands

    QStringList log;    ///< "2 SETUP PTP", "2 events", "remote 45 90", …
    QStringList beats;  ///< the same for signs of life, with their time in seconds
    std::vector<Request> requests;
    int overlaps = 0;  ///< requests that came before the last one was answered, farewells aside
    QList<Response> acknowledged;
    int acknowledgedFrames = 0;

    /// On the event channel of a connection.
    void report(int connection, const QVariantMap& message, bool isWrapped = true);
    void reportBytes(int connection, const QByteArray& body);
    void tell(remote::Envelope message);
    void closeEvents(int connection);

  private:
    struct Conversation {
        int number = 0;
        QPointer<MemoryChannel> channel;
        MessageReader<Request> reader;
        bool isBusy = false;
    };

    QCoro::Task<Access::Link> link();
    QCoro::Task<Dialer::Dialed> dial(quint16 port);
    void take(Conversation& conversation, const QByteArray& bytes);
    void respond(Conversation& conversation, const Request& request);
    [[nodiscard]] QByteArray bodyFor(const Conversation& conversation, const QString& verb) const;
    void takeFrames(const QByteArray& bytes);
    void takeRemote(const remote::Envelope& message);

    VirtualClock& clock_;
    std::vector<std::unique_ptr<Conversation>> conversations_;
    std::map<int, std::unique_ptr<SealedEnd>> events_;
    std::unique_ptr<SealedEnd> data_;
    quint64 seed_ = 0;
    quint64 frames_ = 7;
    std::vector<Clock::Timer> timers_;
};

}  // namespace velmora::test
