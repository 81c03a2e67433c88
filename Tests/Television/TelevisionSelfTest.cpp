// The test television itself: what a sender does right and wrong on its encrypted and guarded connections.
// That it has no complaints elsewhere means something only if it complains here.
#include "Sender/MediaServer.h"
#include "Sender/Pairing/Digest.h"
#include "Sender/Pairing/HapPairing.h"
#include "Sender/Pairing/LegacyPairing.h"
#include "Sender/Plist.h"
#include "Support/VirtualClock.h"
#include "Television/Television.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryFile>
#include <QTimer>
#include <QtEndian>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::Television;
using testing::ElementsAre;
using testing::IsEmpty;
using Flavour = Television::Options::Flavour;
using Handover = Television::Options::Handover;

const QString itemUuid = u"3C0F4A5E-54F2-4E0B-8F9E-0A8D3F4B9D11"_s;

bool waitFor(const auto& condition, int realSeconds = 10) {
    const QDeadlineTimer deadline(realSeconds * 1000);
    QTimer tick;
    tick.start(5);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

Request asking(const QByteArray& method, const QByteArray& target, const Headers& headers = {}) {
    return {.method = method, .target = target, .headers = headers, .body = {}};
}

/// A connection that says what it is told to, right or wrong.
class Client {
  public:
    explicit Client(quint16 port) { socket_.connectToHost(QHostAddress(QHostAddress::LocalHost), port); }

    void seal(const ChannelKeys& keys) {
        sealer_.emplace(keys.encrypt);
        opener_.emplace(keys.decrypt);
    }
    void send(const QByteArray& bytes) { socket_.write(sealer_ ? sealer_->seal(bytes) : bytes); }
    [[nodiscard]] bool isConnected() const { return socket_.state() == QAbstractSocket::ConnectedState; }
    [[nodiscard]] bool isOpen() const { return socket_.state() != QAbstractSocket::UnconnectedState; }

    template <class Message>
    std::optional<Message> receive(MessageReader<Message>& reader) {
        std::optional<Message> message;
        waitFor([&] {
            const QByteArray bytes = socket_.readAll();
            reader.feed(opener_ ? opener_->open(bytes).value_or(QByteArray()) : bytes);
            if (!message) message = reader.next().value_or(std::nullopt);
            return message || !isOpen();
        });
        return message;
    }

    /// Status 0: it hung up instead.
    Response ask(Request request) {
        const bool isRtsp = request.version == "RTSP/1.0" || request.path() == "/command";
        if (sealer_) request.headers.set("User-Agent", "AirPlay/550.10");
        if (isRtsp) {
            request.headers.append("CSeq", QByteArray::number(number_++));
            request.headers.append("DACP-ID", "7A3C0D12E95B4F68");
            request.headers.append("Client-Instance", "7A3C0D12E95B4F68");
            request.headers.append("Active-Remote", "2893741123");
        } else if (!sealer_ && !request.target.startsWith("/pair-")) {
            request.headers.append("X-Apple-Session-ID", "3c0f4a5e-54f2-4e0b-8f9e-0a8d3f4b9d11");
        }
        send(request.encoded());
        Response hungUp;
        hungUp.status = 0;
        return receive(answers_).value_or(hungUp);
    }
    Response pair(const QByteArray& path, const QByteArray& body, const QByteArray& kind = "3") {
        return ask({.method = "POST",
                    .target = path,
                    .headers = {{"X-Apple-HKP", kind},
                                {"X-Apple-Client-Name", "Test"},
                                {"Content-Type", body.isEmpty() ? "" : "application/octet-stream"}},
                    .body = body});
    }
    Response rtsp(const QByteArray& method, const QVariantMap& body = {}) {
        const bool named = method != "POST";
        Request request{.method = method,
                        .target = named ? "rtsp://127.0.0.1/3413821438" : "/feedback",
                        .headers = {},
                        .body = body.isEmpty() ? QByteArray() : Plist::encodeBinary(body),
                        .version = "RTSP/1.0"};
        if (!body.isEmpty()) request.headers.append("Content-Type", "application/x-apple-binary-plist");
        return ask(request);
    }
    Response command(const QVariantMap& inner) {
        const QVariantMap params{{u"data"_s, Plist::encodeBinary(inner)}};
        return ask({.method = "POST",
                    .target = "/command",
                    .headers = {{"X-Apple-StreamID", "7"},
                                {"X-Apple-ProtocolVersion", "1"},
                                {"Content-Type", "application/x-apple-binary-plist"}},
                    .body = Plist::encodeBinary(QVariantMap{{u"params"_s, params}})});
    }

    quint32 number_ = 0;

  private:
    QTcpSocket socket_;
    MessageReader<Response> answers_;
    std::optional<FrameSealer> sealer_;
    std::optional<FrameOpener> opener_;
};

/// The body of a session's SETUP, timed by PTP.
QVariantMap session() {
    const QVariantMap peer{{u"ID"_s, itemUuid},
                           {u"Addresses"_s, QVariantList{u"127.0.0.1"_s}},
                           {u"DeviceType"_s, 0},
                           {u"SupportsClockPortMatchingOverride"_s, true}};
    QVariantMap body{{u"timingProtocol"_s, u"PTP"_s},           {u"timingPeerInfo"_s, peer},
                     {u"timingPeerList"_s, QVariantList{peer}}, {u"sessionUUID"_s, itemUuid},
                     {u"sessionCorrelationUUID"_s, itemUuid},   {u"updateSessionRequest"_s, false},
                     {u"statsCollectionEnabled"_s, false},      {u"isMultiSelectAirPlay"_s, false}};
    for (const char* key : {"deviceID", "macAddress", "model", "name", "osName", "osVersion",
                            "osBuildVersion", "sourceVersion"})
        body.insert(QString::fromLatin1(key), u"text"_s);
    return body;
}

QVariantMap queueStream() {
    return {{u"streams"_s,
             QVariantList{QVariantMap{{u"type"_s, 130},
                                      {u"controlType"_s, 1},
                                      {u"clientUUID"_s, itemUuid},
                                      {u"clientTypeUUID"_s, u"A6B27562-B43A-4F2D-B75F-82391E250194"_s},
                                      {u"channelID"_s, itemUuid + u"-RCS-1"_s}}}}};
}

QVariantMap insertion(const QString& url) {
    return {{u"type"_s, u"insertPlayQueueItem"_s},
            {u"item"_s, QVariantMap{{u"uuid"_s, itemUuid},
                                    {u"mediaType"_s, u"file"_s},
                                    {u"Content-Location"_s, url},
                                    {u"Start-Position-Seconds"_s, 0.0}}}};
}

const QVariantMap item{{u"uuid"_s, itemUuid}};
const QVariantMap interest{{u"type"_s, u"setProperty"_s},
                           {u"property"_s, u"isInterestedInDateRange"_s},
                           {u"value"_s, true},
                           {u"item"_s, item}};
const QVariantMap pauseAtEnd{
    {u"type"_s, u"setProperty"_s}, {u"property"_s, u"actionAtItemEnd"_s}, {u"value"_s, 1}};
const QVariantMap playRate{{u"type"_s, u"setRate"_s}, {u"rate"_s, 1.0}};

class TelevisionSelfTest : public testing::Test {
  protected:
    Television& television(const Television::Options& options) {
        television_ = std::make_unique<Television>(clock_, options);
        EXPECT_TRUE(television_->listen());
        return *television_;
    }
    [[nodiscard]] std::unique_ptr<Client> client() const {
        return std::make_unique<Client>(television_->receiver().port);
    }
    /// A sealed connection to a television with a queue, after transient pairing.
    std::unique_ptr<Client> sealedClient() {
        auto made = client();
        HapTransientSetup setup;
        const Response m2 = made->pair("/pair-setup", setup.start(), "4");
        const Response m4 = made->pair("/pair-setup", setup.prove(m2.body).value(), "4");
        shared_ = setup.finish(m4.body).value();
        made->seal(SecureChannel::control(shared_));
        return made;
    }
    std::unique_ptr<Client> eventClient(const Response& setup) const {
        const QVariantMap body = Plist::decode(setup.body).value_or(QVariant()).toMap();
        auto made = std::make_unique<Client>(quint16(body.value(u"eventPort"_s).toUInt()));
        made->seal(SecureChannel::events(shared_));
        waitFor([&] { return made->isConnected(); });
        return made;
    }
    void verify(Client& client, const LegacyCredentials& credentials) {
        LegacyVerify verify(credentials);
        const Response first = client.pair("/pair-verify", verify.start());
        EXPECT_EQ(client.pair("/pair-verify", verify.prove(first.body).value()).status, 200);
    }

    test::FastClock clock_{50};
    std::unique_ptr<Television> television_;
    Secret shared_;
};

TEST_F(TelevisionSelfTest, AsksForThePasswordOnceAConnection) {
    television({.flavour = Flavour::password, .password = u"open"_s});
    auto first = client();
    Request play = asking("POST", "/rate?value=0.0");
    Response refusal = first->ask(play);
    for (const char16_t* password : {u"shut", u"open"}) {
        ASSERT_EQ(refusal.status, 401);
        const auto challenge = DigestChallenge::parse(refusal.headers.value("WWW-Authenticate"));
        ASSERT_TRUE(challenge);
        DigestAnswer answer(*challenge, QString::fromUtf16(password));
        play.headers = {{"Authorization", answer.authorization("POST", play.target)}};
        refusal = first->ask(play);
    }
    EXPECT_EQ(refusal.status, 200);
    EXPECT_EQ(client()->ask(play).status, 401);  // another connection's proof
    play.headers = {};
    EXPECT_EQ(first->ask(play).status, 200);
    EXPECT_THAT(television_->complaints(), IsEmpty());
}

TEST_F(TelevisionSelfTest, KnowsWhoPairedBeforeTheEncryptedOnes) {
    television({.flavour = Flavour::legacyKeys});
    const Request info = asking("GET", "/server-info");
    EXPECT_EQ(client()->ask(info).status, 403);
    const LegacyIdentity identity = makeLegacyIdentity();
    const Response key = client()->pair("/pair-setup", identity.publicKey());
    auto known = client();
    verify(*known, legacyKeyExchange(identity, key.body).value());
    EXPECT_EQ(known->ask(info).status, 200);
    television_->forgetPairings();
    EXPECT_EQ(client()->pair("/pair-verify", QByteArray("\1\0\0\0", 4) + QByteArray(64, 'k')).status, 470);
    EXPECT_THAT(television_->complaints(), IsEmpty());
}

TEST_F(TelevisionSelfTest, PairsWithItsPin) {
    Television& paired = television({.flavour = Flavour::paired, .pin = u"0815"_s});
    QStringList said;
    QObject::connect(&paired, &Television::said, [&](const QString& line) { said.append(line); });
    auto first = client();
    EXPECT_EQ(first->pair("/pair-setup", HapTransientSetup().start(), "4").status, 470);
    EXPECT_EQ(first->ask(asking("POST", "/pair-pin-start")).status, 200);
    EXPECT_THAT(paired.complaints(), ElementsAre(u"a pairing without X-Apple-Client-Name"_s));

    HapCredentials credentials;
    using Kind = PairingError::Kind;
    for (const auto& [pin, error] :
         {std::pair(u"4711"_s, std::optional(Kind::wrongPin)), std::pair(u"0815"_s, std::optional<Kind>())}) {
        HapPinSetup setup(makeHapIdentity(), u"Test"_s);
        EXPECT_EQ(first->pair("/pair-pin-start", {}).status, 200);
        ASSERT_TRUE(setup.takeChallenge(first->pair("/pair-setup", setup.start()).body));
        const auto m5 = setup.introduce(first->pair("/pair-setup", setup.prove(pin).value()).body);
        ASSERT_EQ(m5.has_value(), !error);
        if (error) {
            EXPECT_EQ(m5.error().kind, *error);
            waitFor([] { return false; }, 1);  // the pause after a wrong PIN
        } else {
            credentials = setup.finish(first->pair("/pair-setup", *m5).body).value();
        }
    }
    EXPECT_THAT(said.filter(u"PIN 0815"_s), testing::SizeIs(2));

    auto second = client();
    HapVerify verify(credentials);
    const Response m2 = second->pair("/pair-verify", verify.start());
    const Response m4 = second->pair("/pair-verify", verify.prove(m2.body).value());
    second->seal(SecureChannel::control(verify.finish(m4.body).value()));
    EXPECT_EQ(second->ask(asking("GET", "/info")).status, 200);
    second->ask(asking("GET", "/info", {{"CSeq", "9"}}));
    EXPECT_EQ(paired.complaints().size(), 1);

    paired.forgetPairings();
    HapVerify again(credentials);
    auto third = client();
    const auto m3 = again.prove(third->pair("/pair-verify", again.start()).body);
    EXPECT_EQ(again.finish(third->pair("/pair-verify", m3.value()).body).error().kind, Kind::forgotten);
}

TEST_F(TelevisionSelfTest, ComplainsAboutASessionOutOfOrder) {
    struct Case {
        const char* complaint;
        std::function<void(Client& client)> wrong;
        bool prepared = false;  // up to the item's insertion
    };
    QVariantMap mixed = session();
    mixed.insert(u"timingPort"_s, 7);
    QVariantMap remote = session();
    remote.insert(u"isRemoteControlOnly"_s, 1);
    const QVariantMap wholeRate{{u"type"_s, u"setRate"_s}, {u"rate"_s, 1}};
    const Case cases[] = {
        {"timingPort", [&](Client& c) { EXPECT_EQ(c.rtsp("SETUP", mixed).status, 400); }},
        {"isRemoteControlOnly", [&](Client& c) { EXPECT_EQ(c.rtsp("SETUP", remote).status, 400); }},
        {"before the event port",
         [](Client& c) {
             c.rtsp("SETUP", session());
             EXPECT_EQ(c.rtsp("RECORD").status, 500);
         }},
        {"before its stream", [](Client& c) { EXPECT_EQ(c.command(playRate).status, 500); }},
        {"does not follow",
         [](Client& c) {
             c.rtsp("SETUP", session());
             c.number_ = 7;
             EXPECT_EQ(c.rtsp("RECORD").status, 400);
         }},
        {"more behind",
         [](Client& c) {
             const Request info = asking("GET", "/info", {{"User-Agent", "AirPlay/1"}});
             c.send(info.encoded() + info.encoded());
         }},
        {"does not open", [](Client& c) { c.seal({Secret(32), Secret(32)}), c.send("GET / RTSP/1.0"); }},
        {"not real", [&](Client& c) { EXPECT_EQ(c.command(wholeRate).status, 200); }, true},
        {"two properties", [](Client& c) { EXPECT_EQ(c.command(playRate).status, 200); }, true},
        {"second item", [](Client& c) { c.command(insertion(u"http://127.0.0.1/b.mp4"_s)); }, true},
        {"before the movie plays", [](Client& c) { EXPECT_EQ(c.rtsp("POST").status, 200); }, true},
        {"beside the queue", [](Client& c) { c.ask(asking("GET", "/playback-info")); }, true},
        {"nobody answers", [](Client&) {}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.complaint);
        television({.flavour = Flavour::transient, .handover = Handover::queue});
        const auto client = sealedClient();
        std::unique_ptr<Client> events;
        if (c.prepared) {
            events = eventClient(client->rtsp("SETUP", session()));
            EXPECT_EQ(client->rtsp("RECORD").status, 200);
            EXPECT_EQ(client->rtsp("SETUP", queueStream()).status, 200);
            EXPECT_EQ(client->command(insertion(u"http://127.0.0.1/a.mp4"_s)).status, 200);
            EXPECT_THAT(television_->complaints(), IsEmpty());
        }
        c.wrong(*client);
        EXPECT_TRUE(waitFor([&] {
            const QStringList& complaints = television_->complaints();
            return !complaints.isEmpty() && complaints.last().contains(QLatin1StringView(c.complaint));
        })) << qPrintable(television_->complaints().join('\n'_L1));
    }
}

QByteArray box(const char* type, const QByteArray& payload) {
    QByteArray size(4, '\0');
    qToBigEndian(quint32(payload.size() + 8), size.data());
    return size + type + payload;
}

TEST_F(TelevisionSelfTest, PlaysAnItemOfTheQueueAndTellsOfIt) {
    QTemporaryFile file(QCoreApplication::applicationDirPath() + u"/XXXXXX.mp4"_s);
    ASSERT_TRUE(file.open());
    QByteArray header(100, '\0');
    qToBigEndian(quint32(1), header.data() + 12);
    qToBigEndian(quint32(8), header.data() + 16);
    file.write(box("ftyp", "isom") + box("moov", box("mvhd", header)) + box("mdat", QByteArray(9000, 'm')));
    file.flush();
    const auto server = MediaServer::start().value();
    const QHostAddress local(QHostAddress::LocalHost);
    const auto published = server->publish(file.fileName(), local).value();

    television({.flavour = Flavour::transient, .handover = Handover::queue});
    const auto client = sealedClient();
    const auto events = eventClient(client->rtsp("SETUP", session()));
    EXPECT_EQ(client->rtsp("RECORD").status, 200);
    client->rtsp("SETUP", queueStream());
    client->command(insertion(published->url(local).toString()));
    client->command(interest);
    client->command(pauseAtEnd);
    EXPECT_EQ(published->activity().requests, 0);
    client->command(playRate);

    MessageReader<Request> reader;
    QStringList told;
    while (!told.contains(u"itemPlayedToEnd"_s)) {
        const auto event = events->receive(reader);
        ASSERT_TRUE(event);
        Response answer;
        answer.version = "RTSP/1.0";
        answer.headers = {{"Audio-Latency", "0"}};
        for (const char* name : {"CSeq", "Server"}) answer.headers.append(name, event->headers.value(name));
        events->send(answer.encoded());
        EXPECT_EQ(client->rtsp("POST").status, 200);
        const QVariantMap body = Plist::decode(event->body).value_or(QVariant()).toMap();
        const QByteArray data = body.value(u"params"_s).toMap().value(u"data"_s).toByteArray();
        const QVariantMap inner = Plist::decode(data).value_or(QVariant()).toMap();
        if (inner.value(u"item"_s).toMap() != item) continue;
        const QString state = inner.value(u"params"_s).toMap().value(u"playbackState"_s).toString();
        told.append(state.isEmpty() ? inner.value(u"name"_s).toString() : state);
    }
    EXPECT_THAT(told, ElementsAre(u"loading"_s, u"playing"_s, u"itemPlayedToEnd"_s));
    EXPECT_THAT(television_->complaints(), IsEmpty());
}

}  // namespace
}  // namespace velmora
