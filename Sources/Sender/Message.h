#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <expected>
#include <initializer_list>
#include <optional>
#include <utility>

namespace velmora {

/// Header lines in their order. Names compare without regard to case.
class Headers {
  public:
    using Entry = std::pair<QByteArray, QByteArray>;

    Headers() = default;
    Headers(std::initializer_list<Entry> entries) : entries_(entries) {}

    void append(QByteArray name, QByteArray value);
    /// Replaces every header of that name.
    void set(QByteArray name, QByteArray value);
    void remove(QByteArrayView name);
    [[nodiscard]] bool contains(QByteArrayView name) const;
    /// The first header of that name; empty when there is none.
    [[nodiscard]] QByteArray value(QByteArrayView name) const;

    [[nodiscard]] qsizetype size() const { return entries_.size(); }
    [[nodiscard]] auto begin() const { return entries_.begin(); }
    [[nodiscard]] auto end() const { return entries_.end(); }

  private:
    QList<Entry> entries_;
};

/// A request in the dialect that receivers speak: HTTP/1.1, or RTSP/1.0 for a few verbs.
struct Request {
    QByteArray method = QByteArrayLiteral("GET");
    QByteArray target = QByteArrayLiteral("/");
    Headers headers;
    QByteArray body;
    QByteArray version = QByteArrayLiteral("HTTP/1.1");

    /// The target up to the query.
    [[nodiscard]] QByteArray path() const;
    /// The bytes for the wire. Content-Length is always there; a header without a value never is, since one
    /// receiver hangs on it.
    [[nodiscard]] QByteArray encoded() const;
};

struct Response {
    int status = 200;
    QByteArray reason = QByteArrayLiteral("OK");
    Headers headers;
    QByteArray body;
    QByteArray version = QByteArrayLiteral("HTTP/1.1");

    [[nodiscard]] bool isSuccess() const { return status >= 200 && status < 300; }
    [[nodiscard]] QByteArray encoded() const;
};

/// How much a peer may send before it is taken for garbage. Real messages stay far below.
struct MessageLimits {
    qsizetype lineBytes = 8 * 1024;
    qsizetype headerCount = 100;
    qsizetype headBytes = 64 * 1024;
    qsizetype bodyBytes = 4 * 1024 * 1024;
};

/// Bytes in, messages out; knows no sockets. `Message` is `Request` or `Response`.
///
/// Takes what real receivers send: lines that end in a bare LF, answers without Content-Length (no body),
/// RTSP/1.0 as version, and a Content-Length whose number runs into the next header. Chunked bodies are
/// refused: no receiver sends them, and on a connection that is kept they would have to be believed.
template <class Message>
class MessageReader {
  public:
    explicit MessageReader(MessageLimits limits = {}) : limits_(limits) {}

    void feed(QByteArrayView bytes) { buffer_.append(bytes); }

    /// The next complete message; nothing while bytes are missing; or what is wrong with the bytes, for good.
    [[nodiscard]] std::expected<std::optional<Message>, QString> next();

    /// What was fed behind the last message: it belongs to whoever speaks on the connection next. A message
    /// that has begun is forgotten.
    QByteArray takeRest();

  private:
    using Step = std::expected<bool, QString>;  // true: go on, false: bytes are missing

    [[nodiscard]] Step readHead();
    [[nodiscard]] Step takeLine(QByteArrayView& line);
    [[nodiscard]] Step readHeader(QByteArrayView line);
    [[nodiscard]] Step measureBody();
    Message takeMessage();

    MessageLimits limits_;
    QByteArray buffer_;
    qsizetype cursor_ = 0;  // up to here the buffer is parsed into message_
    Message message_;
    bool started_ = false;
    bool headDone_ = false;
    qsizetype bodyBytes_ = 0;
    QString fault_;
};

extern template class MessageReader<Request>;
extern template class MessageReader<Response>;

}  // namespace velmora
