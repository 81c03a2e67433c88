#pragma once

#include "Sender/Channel.h"
#include "Sender/Session/MediaRemote/DataFrame.h"
#include "Sender/Session/MediaRemote/MediaRemote.h"
#include "System/Clock.h"
#include "System/Completion.h"

#include <QCoroTask>
#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace velmora {

/// A remote control's messages over a channel of their own: each that arrives is acknowledged, and an answer
/// finds its question. Main thread only.
class DataStream : public QObject {
    Q_OBJECT

  public:
    using Message = remote::Envelope;

    DataStream(Clock& clock, std::unique_ptr<Channel> channel);
    /// Everyone who waits gets nothing.
    ~DataStream() override;

    void send(Message message);
    /// The answer with the same identifier; nothing when none comes in time, or the stream ends.
    [[nodiscard]] QCoro::Task<std::optional<Message>> ask(Message question);

    [[nodiscard]] bool isOpen() const { return channel_->isOpen(); }

    /// Called from the event loop, also for answers.
    void onMessage(std::function<void(const Message&)> handler) { handler_ = std::move(handler); }

  Q_SIGNALS:
    /// Once, when it ends by itself.
    void ended(const velmora::ConnectionError& error);

  private:
    using Reply = Completion<std::optional<Message>>;

    void receive(const QByteArray& bytes);
    void take(const DataFrame& frame);
    void deliver(const Message& message);
    void close();

    Clock& clock_;
    std::unique_ptr<Channel> channel_;
    DataFrameReader reader_;
    quint32 sequence_;
    std::map<std::string, Reply> questions_;
    std::function<void(const Message&)> handler_;
};

}  // namespace velmora
