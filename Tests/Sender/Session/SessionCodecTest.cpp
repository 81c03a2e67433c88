// What goes over the wire, as values.
#include "Sender/MediaTime.h"
#include "Sender/Plist.h"
#include "Sender/Session/MediaRemote/DataFrame.h"
#include "Sender/Session/NtpResponder.h"
#include "Sender/Session/PlayerState.h"
#include "Sender/Session/SessionMessages.h"
#include "Sender/Session/SessionRequests.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using State = PlaybackEvent::State;
using testing::Optional;

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

TEST(SessionCodecTest, TimeIsToldAsAsked) {
    using namespace std::chrono;
    const QByteArray question =
        hex("80d2000700000000000000000000000000000000000000000000000083aa7e8040000000");
    const NtpResponder::Time received{milliseconds(1700000000250)};
    const NtpResponder::Time sent{milliseconds(1700000000500)};
    EXPECT_THAT(NtpResponder::answer(question.first(8) + question.last(24), received, sent),
                Optional(hex("80d300070000000083aa7e8040000000e8fe6f8040000000e8fe6f8080000000")));
    for (const QByteArray& other :
         {QByteArray(), question.first(31), question.last(32) + "x", QByteArray(32, 'x')})
        EXPECT_EQ(NtpResponder::answer(other, received, sent), std::nullopt) << other.toHex().constData();
}

TEST(SessionCodecTest, FramesAreAsReceiversReadThem) {
    const QByteArray body =
        Plist::encodeBinary(SessionMessages::wrapped(MediaRemote::packed(MediaRemote::connected())));
    const DataFrame message{DataFrame::Kind::message, 0x100000007, body};
    const DataFrame reply{DataFrame::Kind::reply, 0x100000007, {}};
    EXPECT_EQ(message.encoded().size(), 104);
    EXPECT_EQ(message.encoded().first(32),
              hex("0000006873796e630000000000000000636f6d6d000000010000000700000000"));
    EXPECT_EQ(reply.encoded(), hex("0000002072706c79000000000000000000000000000000010000000700000000"));

    const QByteArray both = message.encoded() + reply.encoded();
    for (const qsizetype piece : {1, 31, 33, 1000}) {
        DataFrameReader reader;
        std::vector<DataFrame> frames;
        for (qsizetype at = 0; at < both.size(); at += piece) {
            reader.feed(both.mid(at, piece));
            for (auto next = reader.next(); next && *next; next = reader.next()) frames.push_back(**next);
        }
        EXPECT_THAT(frames, testing::ElementsAre(message, reply)) << piece;
    }
    for (const char* damaged :
         {"0000001f", "00040001", "80000000", "0000002073796e64", "0000002073796e6300000001"}) {
        DataFrameReader reader;
        reader.feed(hex(damaged).leftJustified(32, '\0'));
        EXPECT_FALSE(reader.next()) << damaged;
    }
}

TEST(SessionCodecTest, RemoteControlSpeaksInBytesThatAreKnown) {
    using namespace MediaRemote;
    EXPECT_EQ(packed(connected()), hex("070826d202020802"));
    const Envelope seek = command(Command::seek, 90, std::nullopt, u"11111111-2222-3333-4444-555555555555"_s);
    EXPECT_EQ(packed(seek), hex("37080112242d2d2d").first(5) + "11111111-2222-3333-4444-555555555555" +
                                hex("320d082d1209490000000000805640"));

    const QByteArray one = packed(connected());
    EXPECT_EQ(unpacked(one + packed(seek)).value().size(), 2U);
    EXPECT_EQ(unpacked(one.sliced(1)).value().size(), 1U) << "a message without its length";
    Envelope ofEightBytes = connected();
    ofEightBytes.mutable_connection_state()->set_state(200);
    ASSERT_EQ(packed(ofEightBytes).front(), 8);
    EXPECT_EQ(unpacked(packed(ofEightBytes) + one).value().size(), 2U);
    for (const QByteArray& damaged :
         {one.chopped(1), hex("ffffffffff01"), hex("80"), hex("0108"), hex("02d202"), one.repeated(65)})
        EXPECT_EQ(unpacked(damaged), std::nullopt) << damaged.toHex().constData();
}

TEST(SessionCodecTest, NamesThatLeaveTheComputerMeanSomethingElsewhere) {
    const QHostAddress local(u"fe80::1%eth0"_s);
    SessionRequests requests(local, "AirPlay/550.10");
    EXPECT_TRUE(requests.about("SETUP").target.startsWith("rtsp://[fe80::1]/"));
    const SenderIdentity sender = SenderIdentity::ofThisComputer();
    const QVariantMap body = SessionMessages::setup(
        {.sender = sender, .session = {}, .peer = {}, .local = local, .sourceVersion = {}});
    EXPECT_EQ(body.value(u"timingPeerInfo"_s).toMap().value(u"Addresses"_s), QVariantList{u"fe80::1"_s});
    EXPECT_THAT(sender.address.toStdString(), testing::MatchesRegex("[0-9A-F][26AE](:[0-9A-F][0-9A-F]){5}"));
    EXPECT_EQ(SenderIdentity::ofThisComputer().address, sender.address);
}

TEST(SessionCodecTest, EventsAreReadWhereverTheirPartsStand) {
    const QVariantMap item{{u"item"_s, QVariantMap{{u"uuid"_s, u"U"_s}}}};
    const QVariantMap position{{u"position"_s, MediaTime::toFraction(9)}};
    const auto with = [](QVariantMap map, const QVariantMap& more) {
        map.insert(more);
        return map;
    };
    const auto typed = [&](const QString& type, const QVariantMap& more) {
        return with({{u"type"_s, type}}, more);
    };
    const struct {
        QVariantMap message;
        std::optional<State> state;
        std::optional<double> position{};
        QString reason{};
    } cases[] = {
        {typed(u"playbackState"_s, with({{u"name"_s, u"playing"_s}}, with(item, position))), State::playing,
         9},
        {typed(u"playbackState"_s,
               {{u"params"_s, with({{u"playbackState"_s, u"paused"_s}, {u"position"_s, 4.5}}, item)}}),
         State::paused, 4.5},
        {typed(u"playbackState"_s, {{u"name"_s, u"stopped"_s}, {u"reason"_s, u"ended"_s}}),
         State::stopped,
         {},
         u"ended"_s},
        {typed(u"notification"_s, with({{u"name"_s, u"itemPlayedToEnd"_s}}, item)),
         State::stopped,
         {},
         u"ended"_s},
        {typed(u"notification"_s, with({{u"name"_s, u"timeJumped"_s}}, position)), State::other, 9},
        {typed(u"sendMediaRemoteCommand"_s, {{u"value"_s, u"pbal"_s}}), State::stopped, {}, u"interrupted"_s},
        {typed(u"sendMediaRemoteCommand"_s, {{u"value"_s, u"dvlc"_s}}), State::other},
        {typed(u"seek"_s, with({{u"kind"_s, u"response"_s}, {u"error"_s, -50}}, position)), State::other, 9},
        {{{u"category"_s, u"video"_s}, {u"state"_s, u"playing"_s}}, State::playing},
        {typed(u"updateInfo"_s, {{u"value"_s, item}}), std::nullopt},
        {typed(u"somethingNew"_s, {{u"name"_s, u"stopped"_s}}), std::nullopt},
        {{}, std::nullopt},
    };
    for (const auto& [message, state, at, reason] : cases) {
        const auto event = SessionEvent::fromPlist(message);
        const std::string shown = Plist::encodeXml(message).toStdString();
        ASSERT_EQ(event.has_value(), state.has_value()) << shown;
        if (!event) continue;
        EXPECT_EQ(event->event.state, *state) << shown;
        EXPECT_EQ(event->position, at) << shown;
        EXPECT_EQ(event->event.reason, reason) << shown;
        EXPECT_FALSE(event->event.fault) << shown;
    }
    const auto error = SessionEvent::fromPlist(
        typed(u"error"_s, {{u"error"_s, QVariantMap{{u"code"_s, -11828}, {u"domain"_s, u"D"_s}}}}));
    EXPECT_EQ(error.value().event.fault.value().code, -11828);
}

remote::Envelope nowPlaying(double duration, double elapsed, float rate, double stamp) {
    remote::Envelope message;
    auto& info = *message.mutable_set_state()->mutable_now_playing();
    info.set_duration(duration);
    info.set_elapsed(elapsed);
    info.set_rate(rate);
    info.set_timestamp(stamp);
    return message;
}

TEST(SessionCodecTest, OurMovieIsKnownByItsLength) {
    using Sample = RemotePlayer::Sample;
    RemotePlayer player;
    player.expect(120);
    EXPECT_FALSE(player.take(nowPlaying(95, 5, 1, 1000), 1000)) << "another movie";
    EXPECT_TRUE(player.take(nowPlaying(120.4, 5, 1, 1000), 1002));
    EXPECT_EQ(player.sample(), (Sample{5, 2, 1}));
    EXPECT_FALSE(player.take(nowPlaying(120.4, 5, 1, 1000), 1004)) << "the same again is as old as it was";
    EXPECT_TRUE(player.take(nowPlaying(120.4, 9, 0, 2000), 1004)) << "a clock that cannot be right";
    EXPECT_EQ(player.sample(), (Sample{9, 0, 0}));

    remote::Envelope update;
    auto& item = *update.mutable_update_content_item()->add_items();
    item.set_identifier("X");
    item.mutable_metadata()->set_elapsed(30);
    EXPECT_FALSE(player.take(update, 1004)) << "an item that was never ours";
    item.mutable_metadata()->set_duration(120);
    EXPECT_TRUE(player.take(update, 1004));
    item.mutable_metadata()->clear_duration();
    item.mutable_metadata()->set_elapsed(40);
    EXPECT_TRUE(player.take(update, 1004)) << "what is left out is as it was";
    EXPECT_EQ(player.sample()->position, 40);
    auto& client = *update.mutable_update_content_item()->mutable_player_path()->mutable_client();
    client.set_bundle("com.apple.TVMusic");
    item.mutable_metadata()->set_elapsed(50);
    EXPECT_FALSE(player.take(update, 1004)) << "of another program";
    item.mutable_metadata()->set_elapsed(qQNaN());
    client.set_bundle("com.apple.TVAirPlay");
    EXPECT_FALSE(player.take(update, 1004));
}

TEST(SessionCodecTest, ThePositionGoesOnBetweenReports) {
    const Clock::Instant start{};
    const auto event = [](State state, std::optional<double> position = {}) {
        return SessionEvent{.event = {.state = state}, .position = position};
    };
    PlayerState player;
    player.begin(u"U"_s, 0, 60);
    EXPECT_FALSE(player.report(start).isReady);
    player.take(event(State::loading), start);
    EXPECT_FALSE(player.report(start).isReady) << "nothing moves yet";
    player.take(event(State::playing, 10), start);
    EXPECT_EQ(player.report(start + 5s).position, 15);
    EXPECT_EQ(player.report(start + 5s).duration, 60);
    player.take(event(State::paused), start + 5s);
    EXPECT_EQ(player.report(start + 9s).position, 15);
    EXPECT_EQ(player.report(start + 9s).rate, 0);
    player.take({.position = 40, .age = 1, .rate = 1}, start + 9s);
    EXPECT_EQ(player.report(start + 10s).position, 42);
    EXPECT_EQ(player.report(start + 100s).position, 60) << "not beyond the end";
    player.take(event(State::loading), start + 12s);
    EXPECT_EQ(player.report(start + 20s).position, 44) << "it stands while the buffer fills";
    player.take(event(State::stopped), start + 20s);
    player.take(event(State::playing), start + 20s);
    EXPECT_FALSE(player.report(start + 21s).isReady) << "over is over";
}

}  // namespace
}  // namespace velmora
