#include "Sender/Message.h"

#include <gmock/gmock.h>

#include <vector>

namespace velmora {
namespace {

using testing::ElementsAre;

/// Everything that `bytes` hold when they arrive in pieces of `piece` bytes; a fault ends the list as "!".
template <class Message>
std::vector<QByteArray> read(const QByteArray& bytes, qsizetype piece, const MessageLimits& limits = {}) {
    MessageReader<Message> reader(limits);
    std::vector<QByteArray> messages;
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        reader.feed(bytes.mid(at, piece));
        for (;;) {
            auto next = reader.next();
            if (!next) return messages.emplace_back("!"), messages;
            if (!*next) break;
            messages.push_back((*next)->encoded());
        }
    }
    return messages;
}

TEST(Message, ReadsAnswersOfRealReceiversHoweverTheyAreSplit) {
    const struct {
        QByteArray bytes;
        std::vector<QByteArray> expected;
    } cases[] = {
        {"HTTP/1.1 200 OK\nDate: Sat\r\nContent-Length: 2\r\n\r\nab",
         {"HTTP/1.1 200 OK\r\nDate: Sat\r\nContent-Length: 2\r\n\r\nab"}},
        {"HTTP/1.1 200 OK\r\nServer: AirTunes/220.68\r\n\r\nHTTP/1.1 101 Switching Protocols\n\n",
         {"HTTP/1.1 200 OK\r\nServer: AirTunes/220.68\r\nContent-Length: 0\r\n\r\n",
          "HTTP/1.1 101 Switching Protocols\r\nContent-Length: 0\r\n\r\n"}},
        {"\r\n\nRTSP/1.0 453 Not Enough Bandwidth\r\nCSeq:1\r\n\r\n",
         {"RTSP/1.0 453 Not Enough Bandwidth\r\nCSeq: 1\r\nContent-Length: 0\r\n\r\n"}},
        {"HTTP/1.0 404\r\ncontent-length: 3x-apple-session-id: 7\r\n\r\nabc",
         {"HTTP/1.0 404 \r\nContent-Length: 3\r\n\r\nabc"}},
        {"ICY 200 OK\r\n\r\n", {"!"}},
        {"HTTP/1.1 2000 OK\r\n\r\n", {"!"}},
        {"HTTP/1.1 20 OK\r\n\r\n", {"!"}},
        {"HTTP/1.1 099 No\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nno colon\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\n: nameless\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\n folded: x\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nA: b\rC: d\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab", {"!"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n", {"!"}},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", {"!"}},
    };
    for (const auto& entry : cases) {
        for (qsizetype piece = 1; piece <= entry.bytes.size(); ++piece)
            ASSERT_EQ(read<Response>(entry.bytes, piece), entry.expected)
                << entry.bytes.constData() << " in pieces of " << piece;
    }
}

TEST(Message, ReadsRequestsOneBehindTheOther) {
    const QByteArray event =
        "POST /event HTTP/1.1\r\nX-Apple-Session-ID: 1\r\nContent-Length: 4\r\n\r\n\n\r\n\n";
    const QByteArray command = "POST /command RTSP/1.0\r\nCSeq: 3\r\nContent-Length: 0\r\n\r\n";
    for (qsizetype piece = 1; piece < 30; ++piece)
        ASSERT_THAT(read<Request>(event + command, piece), ElementsAre(event, command)) << piece;
    for (const char* bad : {"POST /a b HTTP/1.1\r\n", "POST\r\n", "PO(ST / HTTP/1.1\r\n", "GET / HTTP/2\r\n",
                            "GET  HTTP/1.1\r\n", "bplist00\n"})
        EXPECT_THAT(read<Request>(bad, 1), ElementsAre("!")) << bad;
}

TEST(Message, BoundsWhatAPeerMaySend) {
    const MessageLimits limits{.lineBytes = 40, .headerCount = 3, .headBytes = 80, .bodyBytes = 10};
    const QByteArray line = "HTTP/1.1 200 OK\r\n";
    for (const QByteArray& hostile :
         {QByteArray(41, 'x'), line + "A: " + QByteArray(50, 'y'), line + "A: 1\r\nB: 2\r\nC: 3\r\nD: 4\r\n",
          line + QByteArray("A: 01234567890123456789\r\n").repeated(3), QByteArray("\n").repeated(90),
          line + "Content-Length: 11\r\n\r\n"}) {
        EXPECT_THAT(read<Response>(hostile, 1, limits), ElementsAre("!")) << hostile.constData();
        EXPECT_THAT(read<Response>(hostile, hostile.size(), limits), ElementsAre("!"));
    }
    EXPECT_EQ(read<Response>(line + "Content-Length: 10\r\n\r\n0123456789", 1, limits).size(), 1U);
}

TEST(Message, HandsOverWhatComesBehindTheLastMessage) {
    MessageReader<Response> reader;
    reader.feed("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx\x1f\x01rest");
    ASSERT_TRUE(reader.next().value().has_value());
    EXPECT_EQ(reader.takeRest(), QByteArray("\x1f\x01rest"));
    EXPECT_FALSE(reader.next().value().has_value());
}

TEST(Message, WritesNoEmptyHeaderAndNoHeaderOfSomebodyElse) {
    Request request;
    request.method = "POST";
    request.target = "/rate?value=1.000000";
    request.headers = {
        {"X-Empty", "  "}, {"X-Name", "a\r\nX-Injected: b"}, {"content-length", "7"}, {"X-Name", "c"}};
    EXPECT_EQ(request.encoded(),
              QByteArray("POST /rate?value=1.000000 HTTP/1.1\r\nX-Name: aX-Injected: b\r\nX-Name: c\r\n"
                         "Content-Length: 0\r\n\r\n"));
    request.headers.set("x-name", "d");
    EXPECT_EQ(request.headers.value("X-NAME"), "d");
    EXPECT_EQ(request.headers.size(), 3);
    EXPECT_EQ(request.path(), "/rate");
}

}  // namespace
}  // namespace velmora
