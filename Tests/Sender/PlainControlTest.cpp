#include "Sender/PlainControl.h"
#include "Sender/Plist.h"
#include "Support/VirtualClock.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Kind = ConnectionError::Kind;
using Outcome = VideoControl::Outcome;

/// A receiver on loopback that answers with exactly the bytes it is given, in pieces of any size.
class LoopbackReceiver {
  public:
    LoopbackReceiver() {
        server_.listen(QHostAddress::LocalHost);
        QObject::connect(&server_, &QTcpServer::newConnection, [this] { accept(); });
    }

    /// The bytes for a request; empty: silence; "close": the connection ends.
    std::function<QByteArray(const Request&)> answer;
    qsizetype piece = 100'000;
    std::vector<Request> requests;
    std::vector<QTcpSocket*> sockets;  ///< in the order of connecting

    [[nodiscard]] Receiver receiver() const {
        return {.name = u"tv"_s,
                .identifier = {},
                .address = server_.serverAddress(),
                .port = server_.serverPort()};
    }
    [[nodiscard]] QByteArrayList targets() const {
        QByteArrayList list;
        for (const Request& request : requests) list.append(request.method + " " + request.target);
        return list;
    }

  private:
    void accept() {
        QTcpSocket* socket = server_.nextPendingConnection();
        sockets.push_back(socket);
        const auto reader = std::make_shared<MessageReader<Request>>();
        QObject::connect(socket, &QTcpSocket::readyRead, [this, socket, reader] {
            reader->feed(socket->readAll());
            for (auto request = reader->next(); request && *request; request = reader->next())
                respond(*socket, **request);
        });
    }
    void respond(QTcpSocket& socket, const Request& request) {
        requests.push_back(request);
        const QByteArray bytes = answer(request);
        if (bytes == "close") return socket.disconnectFromHost();
        for (qsizetype sent = 0; sent < bytes.size(); sent += piece) {
            socket.write(bytes.mid(sent, piece));
            socket.flush();
        }
    }

    QTcpServer server_;
};

class PlainControlTest : public testing::Test {
  protected:
    PlainControlTest() {
        tv.answer = [this](const Request& request) {
            if (overrides.contains(request.path())) return overrides.value(request.path());
            if (request.path() == "/reverse") return QByteArray("HTTP/1.1 101 Switching Protocols\n\r\n");
            return Response().encoded();
        };
    }
    ~PlainControlTest() override {
        control.reset();
        QCoreApplication::processEvents();
    }

    /// Runs the event loop until the task is done.
    template <class T>
    T wait(QCoro::Task<T> task) {
        return QCoro::waitFor(std::move(task));
    }
    bool waitUntil(const std::function<bool()>& holds) {
        for (int step = 0; step < 200 && !holds(); ++step) wait(pause());
        return holds();
    }
    QCoro::Task<> pause() { co_await real_.sleep(5ms); }

    [[nodiscard]] std::shared_ptr<Access> access(const Receiver& receiver) {
        return Access::make(clock, receiver, Flavour::plain, {});
    }
    Outcome open(Handover handover = Handover::play) {
        control = PlainControl::make(clock, access(tv.receiver()), handover);
        control->onEvent([this](const PlaybackEvent& event) { events.push_back(event); });
        return wait(control->open());
    }
    static VideoControl::Movie movie() {
        return {.url = QUrl(u"http://127.0.0.1:1/t/movie.mp4"_s),
                .start = 30,
                .duration = 120,
                .uuid = u"6B29FC40-CA47-1067-B31D-00DD010662DA"_s};
    }

    test::FastClock clock{20};
    LoopbackReceiver tv;
    QMap<QByteArray, QByteArray> overrides;
    std::shared_ptr<PlainControl> control;
    std::vector<PlaybackEvent> events;

  private:
    SystemClock real_;
};

TEST_F(PlainControlTest, SpeaksAsReceiversUnderstand) {
    ASSERT_TRUE(open());
    ASSERT_TRUE(wait(control->play(movie())));
    ASSERT_TRUE(wait(control->setRate(1)));
    ASSERT_TRUE(wait(control->seek(12.5)));
    ASSERT_TRUE(wait(control->play(movie())));
    ASSERT_TRUE(wait(control->stop()));
    ASSERT_TRUE(wait(control->play(movie())));
    EXPECT_EQ(tv.targets(), QByteArrayList({"GET /server-info", "POST /reverse", "POST /play",
                                            "POST /rate?value=1.000000", "POST /scrub?position=12.500000",
                                            "POST /stop", "POST /play", "POST /stop", "POST /play"}))
        << "a movie makes way for the next";
    const QByteArray session = tv.requests.front().headers.value("X-Apple-Session-ID");
    EXPECT_EQ(session.size(), 36);
    for (const Request& request : tv.requests) {
        EXPECT_EQ(request.headers.value("x-apple-session-id"), session);
        EXPECT_FALSE(request.headers.contains("CSeq"));
        EXPECT_FALSE(request.headers.contains("Expect"));
    }
    const QVariantMap body = Plist::decode(tv.requests[2].body).value().toMap();
    EXPECT_EQ(body.value(u"Content-Location"_s), u"http://127.0.0.1:1/t/movie.mp4"_s);
    EXPECT_EQ(body.value(u"Start-Position"_s), QVariant(0.25));
    EXPECT_EQ(body.value(u"Start-Position-Seconds"_s), QVariant(30.0));
    EXPECT_EQ(body.value(u"uuid"_s), movie().uuid);
}

TEST_F(PlainControlTest, TakesAnswersInPiecesAndEmptyOnes) {
    const QByteArray report = Plist::encodeXml(QVariantMap{{u"readyToPlay"_s, 1}, {u"duration"_s, 60.0}});
    ASSERT_TRUE(open());
    tv.piece = 1;
    overrides["/playback-info"] =
        "HTTP/1.1 102 Wait\r\n\r\nHTTP/1.1 200 OK\nContent-Length: " + QByteArray::number(report.size()) +
        "\n\n" + report;
    EXPECT_EQ(wait(control->playbackInfo()).value().duration, 60);
    for (const char* empty : {"HTTP/1.1 200 OK\r\n\r\n", "HTTP/1.1 500 No\r\n\r\n"}) {
        overrides["/playback-info"] = empty;
        EXPECT_FALSE(wait(control->playbackInfo()).value().isReady);
    }
}

TEST_F(PlainControlTest, TellsWhatWentWrong) {
    const struct {
        QByteArray answer;
        Kind kind;
        bool staysOpen;
    } cases[] = {
        {"HTTP/1.1 404 Not Found\r\n\r\n", Kind::status, true},
        {"", Kind::timeout, true},
        {"HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\nhalf", Kind::timeout, true},
        {"close", Kind::closed, false},
        {"no answer at all\r\n\r\n", Kind::malformed, false},
    };
    for (const auto& [answer, kind, staysOpen] : cases) {
        overrides.clear();
        ASSERT_TRUE(open());
        overrides["/rate"] = answer;
        const Outcome outcome = wait(control->setRate(0));
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error().kind, kind) << answer.constData();
        EXPECT_EQ(control->isOpen(), staysOpen) << answer.constData();
        const Outcome next = wait(control->stop());
        EXPECT_EQ(!next && next.error().kind == Kind::closed, !staysOpen) << answer.constData();
    }
    QTcpServer nobody;
    nobody.listen(QHostAddress::LocalHost);
    Receiver receiver = tv.receiver();
    receiver.port = nobody.serverPort();
    nobody.close();
    EXPECT_EQ(wait(PlainControl::make(clock, access(receiver))->open()).error().kind, Kind::refused);
}

TEST_F(PlainControlTest, AsksNothingBeforeALateAnswerIsThere) {
    ASSERT_TRUE(open());
    overrides["/scrub"] = "";
    EXPECT_EQ(wait(control->seek(1)).error().kind, Kind::timeout);
    EXPECT_EQ(wait(control->setRate(0)).error().kind, Kind::timeout);
    EXPECT_EQ(tv.targets().last(), "POST /scrub?position=1.000000");
    auto rate = control->setRate(1);
    tv.sockets.front()->write("HTTP/1.1 500 Late\r\n\r\n");
    EXPECT_TRUE(wait(std::move(rate)));
    EXPECT_EQ(tv.targets().last(), "POST /rate?value=1.000000");
}

TEST_F(PlainControlTest, RetriesAPlayThatMayYetSucceed) {
    const struct {
        Handover handover;
        std::vector<int> statuses;
        bool succeeds;
        QByteArray lastType;
    } cases[] = {
        {Handover::play, {500, 500, 500, 200}, true, "application/x-apple-binary-plist"},
        {Handover::play, {500, 500, 500, 500, 200}, false, "application/x-apple-binary-plist"},
        {Handover::play, {501, 200}, false, "application/x-apple-binary-plist"},
        {Handover::playText, {500, 200}, true, "text/parameters"},
    };
    for (const auto& entry : cases) {
        ASSERT_TRUE(open(entry.handover));
        std::deque<int> left(entry.statuses.begin(), entry.statuses.end());
        tv.answer = [&](const Request& request) {
            Response response;
            response.status = request.path() == "/play" ? left.front() : 200;
            if (request.path() == "/play") left.pop_front();
            return response.encoded();
        };
        EXPECT_EQ(wait(control->play(movie())).has_value(), entry.succeeds);
        EXPECT_EQ(tv.requests.back().headers.value("Content-Type"), entry.lastType);
    }
}

TEST_F(PlainControlTest, DeliversEventsAndAnswersThem) {
    const auto event = [](const char* state) {
        Request request;
        request.method = "POST";
        request.target = "/event";
        request.headers.append("CSeq", "4");
        request.body = "\n" + Plist::encodeXml(QVariantMap{{u"state"_s, QString::fromLatin1(state)}});
        return request.encoded();
    };
    // The first one comes in the same breath as the 101.
    overrides["/reverse"] = "HTTP/1.1 101 Switching Protocols\r\n\r\n" + event("loading");
    ASSERT_TRUE(open());
    ASSERT_EQ(tv.sockets.size(), 2U);
    tv.sockets[1]->disconnect();
    tv.sockets[1]->write(event("paused"));
    ASSERT_TRUE(waitUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(events[0].state, PlaybackEvent::State::loading);
    EXPECT_EQ(events[1].state, PlaybackEvent::State::paused);
    const QByteArray answer = "HTTP/1.1 200 OK\r\nCSeq: 4\r\nContent-Length: 0\r\n\r\n";
    EXPECT_TRUE(waitUntil([&] { return tv.sockets[1]->peek(1000) == answer + answer; }));
}

TEST_F(PlainControlTest, GoesOnWithoutEvents) {
    for (const char* refusal : {"HTTP/1.1 501 No\r\n\r\n", "HTTP/1.1 200 OK\r\n\r\n", "close", ""}) {
        overrides["/reverse"] = refusal;
        ASSERT_TRUE(open());
        EXPECT_TRUE(wait(control->play(movie())));
    }
}

TEST_F(PlainControlTest, ShowsTheOneReceiverThatWantsItThatItIsThere) {
    const auto beats = [this] { return tv.targets().count("POST /feedback"); };
    Response info;
    for (const bool isTheOne : {false, true}) {
        QVariantMap body{{u"srcvers"_s, u"220.68"_s}};
        if (!isTheOne) body.insert(u"osvers"_s, u"8.4"_s);
        info.body = Plist::encodeXml(body);
        overrides["/server-info"] = info.encoded();
        ASSERT_TRUE(open());
        EXPECT_EQ(waitUntil([&] { return beats() >= 3; }), isTheOne);
    }
    EXPECT_EQ(tv.requests.back().version, "RTSP/1.0");
}

TEST_F(PlainControlTest, SendsAStopWhenNobodyCanWait) {
    ASSERT_TRUE(open());
    overrides["/playback-info"] = "";
    const auto poll = control->playbackInfo();
    control->abandon();
    EXPECT_TRUE(waitUntil([this] { return tv.targets().last() == "POST /stop"; }));
}

}  // namespace
}  // namespace velmora
