// The two engines behind one player: real decoding here, a scripted television in virtual time there.
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/MpvPlayer.h"
#include "Platform/Linux/NetworkOutputContext.h"
#include "Sender/ScriptedControl.h"
#include "Support/WaitFor.h"

#include <gmock/gmock.h>
#include <malloc.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::waitFor;
using Event = PlaybackEvent::State;
using Kind = MediaGroup::Kind;
using Phase = RemotePlayback::Phase;
using Status = Player::TimeControlStatus;
using testing::ElementsAre;

constexpr Player::Tolerance exactly{.before = 0, .after = 0};

class FakePublication : public MediaServer::Publication {
  public:
    QUrl url(const QHostAddress& /*local*/) const override { return QUrl(u"http://192.0.2.1/movie.mp4"_s); }
    MediaServer::Activity activity() const override {
        MediaServer::Activity activity;
        activity.requests = activity.mediaRequests = 2;
        activity.readPastIndex = true;
        return activity;
    }
};

Receiver receiver(const QString& name) {
    return {
        .name = name, .identifier = name + u" id"_s, .address = QHostAddress(u"192.0.2.2"_s), .port = 7000};
}

/// A window's player, its context, and the televisions that the context finds.
class LinuxPlayerTest : public testing::Test {
  protected:
    ~LinuxPlayerTest() override {
        player.reset();
        clock.advance(10s);
    }

    std::shared_ptr<LinuxPlayer> makePlayer() {
        LinuxPlayer::Environment environment{
            .makeLocal = MpvPlayer::maker({.isMute = true, .hardwareDecoding = u"no"_s})};
        environment.lightDisplay = [this] { return light; };
        auto made = std::make_shared<LinuxPlayer>(clock, environment);
        made->setPausesAtEnd(true);
        made->setOutputContext(&context);
        return made;
    }
    std::shared_ptr<PlayerItem> load(LinuxPlayer& into, const char* name = "long.mkv") {
        auto item = std::make_shared<LinuxPlayerItem>(
            QUrl::fromLocalFile(QStringLiteral(VELMORA_SAMPLE_MOVIES "/") + QString::fromLatin1(name)));
        into.replaceCurrentItem(item);
        EXPECT_TRUE(waitFor([&] { return item->status() != PlayerItem::Status::unknown; }));
        return item;
    }
    void chooseTelevision() { context.setOutputDevice(OutputContext::Device{{}, u"Den id"_s}, 7); }
    /// On the television, `seconds` after the start.
    void playThere(double start, std::chrono::milliseconds duration = 3s, const char* name = "long.mkv") {
        chooseTelevision();
        load(*player, name);
        player->seek(start, exactly, {});
        player->play();
        clock.advance(duration);
        ASSERT_TRUE(player->isExternalPlaybackActive());
        ASSERT_EQ(player->timeControlStatus(), Status::playing);
    }
    [[nodiscard]] test::ScriptedControl& tv() const { return *controls.back(); }
    [[nodiscard]] double position() const { return player->currentTime().value_or(-1); }

    test::VirtualClock clock;
    std::vector<std::shared_ptr<test::ScriptedControl>> controls;
    std::vector<TrackChoice> published;
    std::function<void(test::ScriptedControl&)> direct;  // how the next television behaves
    std::shared_ptr<int> light = std::make_shared<int>();
    RemotePlayback::World sender{
        .control = [this](const Receiver&) -> std::shared_ptr<VideoControl> {
            auto& television = *controls.emplace_back(std::make_shared<test::ScriptedControl>(clock));
            television.report = [&television](double seconds) -> VideoControl::Reported {
                PlaybackReport report = television.usual(seconds);
                report.duration = 100;
                return report;
            };
            if (direct) direct(television);
            return controls.back();
        },
        .publish = [this](const QString&, const QHostAddress&,
                          const TrackChoice& tracks) -> RemotePlayback::World::Published {
            published.push_back(tracks);
            return std::make_unique<FakePublication>();
        },
        .mediaPort = 47110};
    RemoteOutput::World output{.resolve = [](Receiver found) -> QCoro::Task<RemoteOutput::Resolved> {
                                   if (found.name == u"Attic"_s)
                                       co_return std::unexpected(u"Attic is switched off."_s);
                                   co_return found;
                               },
                               .makePlayback = [this]() -> RemoteOutput::Made {
                                   return std::make_unique<RemotePlayback>(clock, sender);
                               }};
    NetworkOutputContext context{
        clock,
        {.receivers = [] { return QList<Receiver>{receiver(u"Attic"_s), receiver(u"Den"_s)}; },
         .output = output}};
    std::shared_ptr<LinuxPlayer> player = makePlayer();
};

TEST_F(LinuxPlayerTest, PlaysHereWithoutATelevision) {
    player->setPreventsDisplaySleep(true);
    const auto item = load(*player, "as-is.mp4");
    EXPECT_NEAR(item->duration().value_or(0), 4, 0.05);
    int ticks = 0;
    const auto observation = player->observeTime(500ms, [&](std::optional<double>) { ++ticks; });
    clock.advance(5s);
    EXPECT_EQ(ticks, 0) << "time stands still";

    player->seek(3.5, exactly, {});
    player->play();
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_EQ(light.use_count(), 2);
    ASSERT_TRUE(waitFor([this] { return position() > 3.6; }));
    ticks = 0;
    clock.advance(2s);
    EXPECT_EQ(ticks, 4);
    ASSERT_TRUE(waitFor([this] { return player->timeControlStatus() == Status::paused; }));
    EXPECT_NEAR(position(), 4, 0.1);
    EXPECT_EQ(light.use_count(), 1);
    player->play();
    EXPECT_EQ(player->timeControlStatus(), Status::paused) << "there is nothing after the end";
    EXPECT_TRUE(controls.empty());
}

TEST_F(LinuxPlayerTest, PlayMeansTheTelevisionOnceItReallyPlays) {
    chooseTelevision();
    EXPECT_EQ(context.outputDevice()->name, u"Den"_s);
    EXPECT_EQ(context.outputDeviceFeatures(), OutputContext::video);
    const auto item = load(*player);
    player->seek(42, exactly, {});
    player->play();
    clock.advance(600ms);
    EXPECT_FALSE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::waiting);
    EXPECT_NEAR(position(), 42, 0.1);
    clock.advance(2s);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_NEAR(position(), 44, 0.3);
    EXPECT_EQ(tv().verbs, (QStringList{u"open"_s, u"play 42"_s, u"rate 1"_s}));
    EXPECT_TRUE(player->local().isPaused()) << "nothing sounds here";

    std::vector<double> told;
    const auto observation =
        player->observeTime(500ms, [&](std::optional<double> time) { told.push_back(time.value_or(-1)); });
    player->pause();
    player->play();
    player->seek(70, {.before = 0.5, .after = 0},
                 [&](bool finished) { told.push_back(finished ? 1000 : 2000); });
    EXPECT_NEAR(position(), 70, 0.1);
    clock.advance(100ms);
    EXPECT_EQ(tv().verbs.mid(3), QStringList(u"seek 70"_s)) << "a pause taken back is nothing to tell";
    EXPECT_THAT(told, testing::Contains(1000));
    player->pause();
    EXPECT_EQ(player->timeControlStatus(), Status::paused);
    clock.advance(1s);
    EXPECT_EQ(tv().verbs.last(), u"rate 0"_s);
    player->play();
    EXPECT_EQ(player->timeControlStatus(), Status::waiting);
    clock.advance(2s);
    EXPECT_EQ(player->timeControlStatus(), Status::playing);

    tv().turn(0);
    clock.advance(3s);
    EXPECT_EQ(player->timeControlStatus(), Status::paused) << "with the television's own remote";
    tv().turn(1);
    clock.advance(3s);
    EXPECT_EQ(player->timeControlStatus(), Status::playing);

    player.reset();
    clock.advance(1s);
    EXPECT_EQ(tv().verbs.last(), u"stop"_s);
}

TEST_F(LinuxPlayerTest, ADropKeepsThePositionAndTheContextAttachesAgain) {
    playThere(20);
    tv().close();
    clock.advance(1s);
    EXPECT_FALSE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::waiting);
    EXPECT_TRUE(player->local().isPaused());
    const double dropped = position();
    EXPECT_NEAR(dropped, 22.3, 0.8);
    clock.advance(10s);
    EXPECT_EQ(controls.size(), 1U) << "until somebody asks";
    EXPECT_EQ(position(), dropped);
    player->setOutputContext(&context);
    clock.advance(3s);
    ASSERT_EQ(controls.size(), 2U);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_NEAR(position(), dropped + 2.3, 1);

    player->pause();
    clock.advance(1s);
    tv().close();
    clock.advance(1s);
    EXPECT_FALSE(player->isExternalPlaybackActive());
    player->setOutputContext(&context);
    clock.advance(3s);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::paused);
    EXPECT_EQ(tv().verbs.last(), u"rate 0"_s);
}

TEST_F(LinuxPlayerTest, TakesNoMoreMemoryTheLongerTheTelevisionPlays) {
    playThere(0);
    int ticks = 0;
    const auto observation = player->observeTime(500ms, [&](std::optional<double>) { ++ticks; });
    const auto watchAgain = [this](int times) {
        for (int time = 0; time < times; ++time) {
            clock.advance(90s);
            player->seek(0, exactly, {});
        }
        const struct mallinfo2 heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    const size_t before = watchAgain(4);
    EXPECT_LT(watchAgain(120), before + size_t{64} * 1024) << "in three hours";
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_GT(ticks, 6 * 3600);
}

TEST_F(LinuxPlayerTest, TheEndThereIsTheEndOfTheItem) {
    playThere(97);
    tv().report = [](double) { return PlaybackReport(); };
    tv().say(Event::stopped, u"ended"_s);
    clock.advance(4s);
    EXPECT_TRUE(player->isExternalPlaybackActive()) << "over, not lost";
    EXPECT_EQ(player->timeControlStatus(), Status::paused);
    EXPECT_GT(position(), 98);
    player->play();
    clock.advance(2s);
    EXPECT_EQ(controls.size(), 1U);
    player->seek(0, exactly, {});
    player->play();
    clock.advance(3s);
    EXPECT_TRUE(tv().verbs.contains(u"play 0"_s)) << qPrintable(tv().verbs.join(u','));
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
}

TEST_F(LinuxPlayerTest, TheNextPlayerGoesOnWithWhatTheOneBeforeBegan) {
    direct = [](test::ScriptedControl& television) { television.movesAfter = 8; };
    chooseTelevision();
    load(*player);
    player->play();
    clock.advance(4s);
    player->pause();
    player->replaceCurrentItem(nullptr);
    clock.advance(2s);
    player = makePlayer();
    load(*player);
    player->play();
    clock.advance(5s);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    ASSERT_EQ(controls.size(), 1U);
    EXPECT_EQ(tv().movies.size(), 1U);
    // What nobody takes up ends soon; at once where the route was taken back.
    for (const bool isRouteTakenBack : {false, true}) {
        load(*player);
        clock.advance(2s);
        if (isRouteTakenBack) context.setOutputDevice(std::nullopt, 0);
        player->replaceCurrentItem(nullptr);
        clock.advance(1s);
        EXPECT_EQ(tv().verbs.last() == u"stop"_s, isRouteTakenBack);
        clock.advance(10s);
        EXPECT_EQ(tv().verbs.last(), u"stop"_s);
    }
}

TEST_F(LinuxPlayerTest, FailuresPauseAndClosingWaitsForTheTelevision) {
    context.setOutputDevice(OutputContext::Device{u"Attic"_s, {}}, 7);
    load(*player);
    player->play();
    clock.advance(1s);
    EXPECT_EQ(player->timeControlStatus(), Status::paused);
    EXPECT_EQ(context.output().state().reason, u"Attic is switched off."_s);
    EXPECT_EQ(context.output().state().phase, Phase::failed);

    playThere(10);
    bool finished = false;
    tv().latency = [](const QString& verb) { return verb == u"stop"_s ? 3s : 10ms; };
    player.reset();
    context.output().finish([&] { finished = true; });
    clock.advance(2s);
    EXPECT_FALSE(finished);
    clock.advance(3s);
    EXPECT_TRUE(finished);
    finished = false;
    context.output().finish([&] { finished = true; });
    clock.advance(0s);
    EXPECT_TRUE(finished) << "nothing to wait for";
}

TrackChoice languages(int sound, int text) {
    return {.audio = TrackChoice::Track{sound, 2}, .subtitle = TrackChoice::Track{text, 2}};
}

TEST_F(LinuxPlayerTest, SelectedTracksAreThoseOnTheTelevision) {
    playThere(20, 3s, "languages.mp4");
    EXPECT_THAT(published, ElementsAre(languages(1, 1))) << "the file's own";
    const auto item = player->currentItem();
    std::optional<MediaGroup> texts;
    std::optional<MediaGroup> sounds;
    item->loadGroup(Kind::legible, [&](const auto& group) { texts = group; });
    item->loadGroup(Kind::audible, [&](const auto& group) { sounds = group; });
    clock.advance(0s);
    ASSERT_TRUE(texts && sounds);
    int statuses = 0;
    int externals = 0;
    QObject::connect(&*player, &Player::timeControlStatusChanged, [&] { ++statuses; });
    QObject::connect(&*player, &Player::externalPlaybackActiveChanged, [&] { ++externals; });

    const double before = position();
    for (const int choice : {0, 1, 0, 1}) {
        item->select(sounds->options[choice], Kind::audible);
        clock.advance(100ms);
    }
    item->select(std::nullopt, Kind::legible);
    clock.advance(1s);
    EXPECT_EQ(player->timeControlStatus(), Status::waiting);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    clock.advance(4s);
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_THAT(published, ElementsAre(languages(1, 1), languages(2, 0)));
    EXPECT_NEAR(position(), before + 4.7, 1);
    EXPECT_EQ(statuses, 2) << "waiting and playing";

    player->pause();
    clock.advance(2s);
    item->select(texts->options[1], Kind::legible);
    clock.advance(8s);
    EXPECT_THAT(published, testing::Contains(languages(2, 2)));
    EXPECT_EQ(player->timeControlStatus(), Status::paused) << "that it plays for a moment is nobody's wish";
    EXPECT_EQ(tv().verbs.last(), u"rate 0"_s);
    EXPECT_EQ(externals, 0);
    ASSERT_EQ(controls.size(), 1U);

    // The next player of the movie is not asked to choose again, and what it has selected counts.
    tv().close();
    clock.advance(1s);
    player->setOutputContext(&context);
    clock.advance(5s);
    EXPECT_EQ(published.back(), languages(2, 2));
    EXPECT_EQ(player->timeControlStatus(), Status::paused);

    // What is closed meanwhile has no tracks to choose.
    item->select(std::nullopt, Kind::legible);
    tv().latency = [](const QString& verb) { return verb == u"stop"_s ? 3s : 10ms; };
    context.endPlayback();
    clock.advance(5s);
    EXPECT_EQ(published.back(), languages(2, 2));
}

TEST_F(LinuxPlayerTest, ItemsNameTheirTracks) {
    const auto item = load(*player, "hevc.mkv");
    std::optional<MediaGroup> texts;
    std::optional<MediaGroup> sounds;
    item->loadGroup(Kind::legible, [&](const auto& group) { texts = group; });
    item->loadGroup(Kind::audible, [&](const auto& group) { sounds = group; });
    ASSERT_TRUE(waitFor([&] { return texts && sounds; }));
    QStringList lines;
    for (const MediaOption& option : texts->options + sounds->options) {
        lines.append(u"%1 %2%3%4"_s.arg(option.displayName, option.language.value_or(u"-"_s),
                                        option.hasOnlyForcedSubtitles ? u" forced"_s : u""_s,
                                        option.describesSound ? u" sound"_s : u""_s));
    }
    EXPECT_EQ(lines.join(u'|').toStdString(),
              "English SDH eng sound|German ger forced|French fre|German ger|English eng");
    EXPECT_EQ(item->selected(Kind::audible), sounds->options[0]);
    EXPECT_EQ(item->selected(Kind::legible), std::nullopt);
    item->select(sounds->options[1], Kind::audible);
    EXPECT_EQ(item->selected(Kind::audible), sounds->options[1]);

    const QList<LocalEngine::Track> tracks{
        {.kind = Kind::audible, .number = 1, .language = u"eng"_s, .channels = 6},
        {.kind = Kind::audible, .number = 2, .language = u"en"_s, .channels = 2},
        {.kind = Kind::audible, .number = 3}};
    const MediaGroup group = LinuxPlayerItem::groupOf(tracks, Kind::audible).value_or(MediaGroup());
    QStringList names;
    for (const MediaOption& option : group.options) names.append(option.displayName);
    EXPECT_EQ(names, (QStringList{u"English (5.1)"_s, u"English (stereo)"_s, u"Track 3"_s}));
}

TEST_F(LinuxPlayerTest, ItemsThatCannotBePlayedSayWhy) {
    for (const auto& [name, reason] :
         {std::pair{"vanished.mkv", u"The movie cannot be opened."_s},
          std::pair{"done", u"There is nothing in this file that can be played."_s}}) {
        const auto item = load(*player, name);
        EXPECT_EQ(item->status(), PlayerItem::Status::failed);
        EXPECT_EQ(item->error(), reason);
    }
}

}  // namespace
}  // namespace velmora
