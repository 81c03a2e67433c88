#include "Playback/Story.h"

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

const auto film = u"Film (Velmora).mp4"_s;

TEST(Handover, firstAttemptSucceeds) {
    Story story;
    story.savePosition(1200.7);
    story.stage.takenAfter = {{2, 1.2}};
    story.start(u"Den"_s);
    EXPECT_EQ(story.session->handingOverTo(), u"Den"_s);
    EXPECT_EQ(story.session->savedTimeline(), (Session::Timeline{1200.7, 5400}));
    story.run(20);

    EXPECT_EQ(story.stage.journal(), (QStringList{u"0 2 item "_s + film, u"0.3 2 seek 1200.7 exactly"_s,
                                                  u"0.5 2 play"_s, u"2 2 pause"_s, u"2 1 gone"_s,
                                                  u"2 2 play"_s, u"6 load subtitles"_s, u"6 load audio"_s}));
    const QStringList logged{u"prepared %1: Repacked"_s.arg(story.folder.filePath(film)),
                             u"AirPlay attempt 1: pre-seek to 1200s landed=true at 1200s"_s,
                             u"AirPlay attempt 1: fresh player created, waiting for external playback"_s,
                             u"AirPlay attempt 1: external=true type=-1 status=1 err=-"_s,
                             u"externalPlayback true"_s,
                             u"playing Film (Velmora).mp4 on Den from 1200s external=true"_s};
    EXPECT_EQ(story.log.take(), logged);
    const ScriptedPlayer& player = story.stage.player(2);
    EXPECT_TRUE(player.pausesAtEnd && player.preventsDisplaySleep && player.allowsExternalPlayback);
    EXPECT_EQ(player.timesAttached, 1);
    EXPECT_EQ(story.session->player().get(), &player);
    EXPECT_EQ(story.session->handingOverTo(), std::nullopt);
    EXPECT_TRUE(story.session->isOnAppleTV() && story.session->isPlaying() && !story.power.held.empty());
    EXPECT_NEAR(story.session->currentTime(), 1200.7 + 18 + 0.3, 0.51) << "shown from the first picture on";
}

TEST(Handover, secondAttemptSucceeds) {
    Story story;
    story.savePosition(11);
    story.stage.seekTakes = 0.1;
    story.stage.takenAfter = {{3, 0.1}};
    story.start(u"Den"_s);
    story.run(12);
    EXPECT_EQ(
        story.stage.journal(),
        (QStringList{u"0 2 item "_s + film, u"0.3 2 seek 11 exactly"_s, u"0.4 2 play"_s, u"7.9 2 pause"_s,
                     u"7.9 2 empty"_s, u"9.9 2 gone"_s, u"9.9 3 item "_s + film, u"10.2 3 seek 11 exactly"_s,
                     u"10.3 3 play"_s, u"10.8 3 pause"_s, u"10.8 1 gone"_s, u"10.8 3 play"_s}));
    EXPECT_TRUE(story.session->isOnAppleTV());
}

TEST(Handover, bothAttemptsFailAndTheStallGuardPauses) {
    Story story;
    story.start(u"Den"_s);
    story.run(16.999);
    EXPECT_EQ(story.session->handingOverTo(), u"Den"_s);
    EXPECT_FALSE(story.session->isStalled() || story.session->canPlayAction());
    story.run(13);
    EXPECT_EQ(story.stage.journal(),
              (QStringList{u"0 2 item "_s + film, u"0 2 play"_s, u"7.5 2 pause"_s, u"7.5 2 empty"_s,
                           u"9.5 2 gone"_s, u"9.5 3 item "_s + film, u"9.5 3 play"_s, u"17 3 pause"_s,
                           u"17 1 gone"_s, u"17 3 play"_s, u"17.05 3 attach"_s, u"20 3 pause"_s,
                           u"21 load subtitles"_s, u"21 load audio"_s}));
    EXPECT_TRUE(story.log.take().contains(u"stalled: Den did not take the video; paused"_s));
    EXPECT_TRUE(story.session->isStalled() && !story.session->isPlaying() && story.power.held.empty());

    story.savePosition(800);
    story.stage.takenAfter = {{4, 0}};
    story.session->playAction();
    story.run(2);
    EXPECT_TRUE(story.stage.journal().contains(u"30.299 4 seek 800 exactly"_s))
        << "again, from where the viewer was";
    EXPECT_TRUE(story.session->isOnAppleTV());
}

TEST(Handover, waitsAsLongAsTheDeviceWaitsForItsViewer) {
    Story story;
    story.context.isAwaitingViewer = true;
    story.start(u"Den"_s);
    story.run(120);
    EXPECT_EQ(story.session->handingOverTo(), u"Den"_s);
    EXPECT_EQ(story.stage.journal(), (QStringList{u"0 2 item "_s + film, u"0 2 play"_s}));
    story.context.isAwaitingViewer = false;
    story.run(7);
    EXPECT_EQ(story.stage.players.size(), 2) << "the usual time, from the answer on";
    story.stage.player(2).setExternal(true);
    story.run(5);
    ASSERT_TRUE(story.session->isOnAppleTV() && story.session->isPlaying());

    // It asks anew after a lost connection: that is no stall.
    story.context.isAwaitingViewer = true;
    story.stage.player(2).setExternal(false);
    story.run(60);
    EXPECT_TRUE(story.session->isStalled() && story.session->isPlaying());
    EXPECT_EQ(story.context.timesEnded, 1) << "when the movie before was closed";
    story.session->cancel();
    EXPECT_EQ(story.context.timesEnded, 2);
    EXPECT_FALSE(story.session->isPlaying());
}

TEST(Handover, looksForTheStartAndCorrectsAFallBack) {
    struct Case {
        double jumpsAt, jumpsTo;  // seconds after the player was adopted; where it then is
        QStringList corrected;
    };
    const Case cases[] = {
        {2, 0, {u"3 2 seek 1200"_s}},
        {5, 1176, {u"8 2 seek 1200"_s}},
        {2.9, 1179.8, {u"3 2 seek 1200"_s}},
        {2.9, 1180.1, {}},
        {2.9, 1300, {}},
        {8.5, 0, {}},
    };
    for (const Case& expected : cases) {
        Story story;
        story.savePosition(1200);
        story.startOnTelevision();
        story.run(expected.jumpsAt);
        story.stage.player(2).setPosition(expected.jumpsTo);
        story.run(20);
        EXPECT_EQ(story.stage.journal().filter(u"seek"_s), expected.corrected) << expected.jumpsTo;
    }
    Story story;
    story.savePosition(1200);
    story.startOnTelevision();
    story.session->startOver();
    story.run(20);
    EXPECT_EQ(story.stage.journal().filter(u"seek"_s), QStringList{u"0 2 seek 0 or before"_s});
}

TEST(Handover, returnsToThisComputerPausedWhereTheTelevisionWas) {
    struct Case {
        double place;
        QStringList seeks;
    };
    const Case cases[] = {
        {1, {}}, {1.1, {u"0.5 2 seek 1.1 or before"_s}}, {700, {u"0.5 2 seek 700 or before"_s}}};
    for (const Case& expected : cases) {
        Story story;
        story.startOnTelevision();
        story.session->togglePlayPause();
        story.stage.player(2).setPosition(expected.place);
        story.context.device.reset();
        story.run(20);
        EXPECT_EQ(story.stage.journal().filter(u"seek"_s), expected.seeks);
        EXPECT_TRUE(story.log.take().contains(
            u"ready, paused Film (Velmora).mp4 on this Mac from %1s external=true"_s.arg(
                int(expected.place))));
        EXPECT_FALSE(story.session->isPlaying());
    }
}

TEST(Handover, leavesAViewerAloneWhoPausesAtOnce) {
    Story story;
    story.startOnTelevision();
    story.session->togglePlayPause();
    story.run(10);
    EXPECT_FALSE(story.session->isPlaying());
}

TEST(Handover, beginsAtTheBeginningOfAFileThatHasBecomeShorter) {
    Story story;
    story.savePosition(6000);
    story.stage.takenAfter = {{2, 0}};
    story.start(u"Den"_s);
    story.run(20);
    EXPECT_TRUE(story.session->isOnAppleTV());
    EXPECT_EQ(story.stage.journal().filter(u"seek"_s), QStringList());
}

TEST(Handover, nudgesAPlayerThatStaysPausedUnlessTheDeviceJustDroppedIt) {
    struct Case {
        QList<double> drops;  // seconds after adoption
        QStringList plays;
    };
    const Case cases[] = {
        {{}, {u"1.5 2 play"_s}},        {{0.4}, {u"1.5 2 play"_s}}, {{0.6}, {u"2.5 2 play"_s}},
        {{1, 2, 3}, {u"4.5 2 play"_s}}, {{1, 2, 3, 4}, {}},
    };
    for (const Case& expected : cases) {
        Story story;
        story.stage.ignoredPlays = 1;
        story.startOnTelevision();
        double now = 0;
        for (const double drop : expected.drops) {
            story.run(drop - now);
            story.stage.player(2).setExternal(false);
            story.run(0.02);
            story.stage.player(2).setExternal(true);
            now = drop + 0.02;
        }
        story.run(10);
        EXPECT_EQ(story.stage.journal().filter(u"play"_s), expected.plays) << expected.drops.size();
        EXPECT_EQ(story.session->isPlaying(), !expected.plays.empty());
    }
}

TEST(Handover, reattachesAfterADropAndHidesShortOnes) {
    struct Case {
        double lasts;
        QStringList done;
        int flickers;
    };
    const Case cases[] = {
        {0.04, {}, 0},
        {0.9, {u"0.05 2 attach"_s}, 0},
        {1.1, {u"0.05 2 attach"_s}, 2},
        {4, {u"0.05 2 attach"_s, u"3 2 pause"_s}, 2},
    };
    for (const Case& expected : cases) {
        Story story;
        story.startOnTelevision();
        int flickers = 0;
        QObject::connect(story.session.get(), &Session::routeChanged, [&] { ++flickers; });
        story.stage.player(2).setExternal(false);
        story.run(expected.lasts);
        story.stage.player(2).setExternal(true);
        story.run(10);
        EXPECT_EQ(story.stage.journal().filter(u" 2 "_s), expected.done) << expected.lasts;
        EXPECT_EQ(flickers, expected.flickers) << expected.lasts;
        EXPECT_TRUE(story.session->isOnAppleTV());
    }
}

TEST(Handover, aStartThatIsSupersededEndsAtOnceAndLeavesNothing) {
    // The handover waits for the item, for the seek, for the device, between its attempts, for the device.
    for (const double after : {0.1, 0.4, 3.0, 8.5, 12.0}) {
        Story story;
        story.savePosition(1200);
        story.start(u"Den"_s);
        story.run(after);
        story.context.choose(u"Attic"_s);
        story.run(0.5);
        EXPECT_EQ(story.session->handingOverTo(), u"Attic"_s) << after;
        EXPECT_EQ(story.stage.alive(), 2) << "the one to come, and the one that has been";
        const int attempts = int(story.stage.players.size());
        story.stage.takenAfter = {{attempts, 1}};
        story.run(5);
        EXPECT_EQ(story.session->player().get(), &story.stage.player(attempts)) << after;
        EXPECT_NEAR(story.session->currentTime(), 1204, 2) << "the place is not lost on the way";

        story.stage.takenAfter = {};
        story.context.choose(u"Den"_s);
        story.run(after + 0.5);
        story.session->cancel();
        story.run(0.001);
        EXPECT_EQ(story.session->handingOverTo(), std::nullopt);
        story.stage.begin();
        story.run(30);
        EXPECT_EQ(story.stage.journal(), QStringList()) << "nobody plays a movie that was closed";
    }
}

TEST(Handover, whatWaitsForAnotherPlayerDoesNothing) {
    Story story;
    story.savePosition(1200);
    story.stage.ignoredPlays = 1;
    story.startOnTelevision();
    story.stage.takenAfter = {{3, 0.5}};
    // Under way now: the check of the start, the nudge, the tracks; and after this the return of the device.
    story.stage.player(2).setExternal(false);
    story.session->retryHandover();
    story.run(20);
    const QStringList journal = story.stage.journal();
    EXPECT_EQ(journal.filter(u" 2 "_s), (QStringList{u"0 2 empty"_s, u"1 2 gone"_s}));
    EXPECT_EQ(journal.filter(u"load subtitles"_s).size(), 1);
    EXPECT_EQ(journal.filter(u" play"_s).size(), 3) << "the handover, the adoption, one nudge";
}

TEST(Handover, aRouteChangeStartsAgainOnlyWhatIsReady) {
    for (const QString& phase : {u"idle"_s, u"preparing"_s, u"failed"_s, u"ready"_s}) {
        Story story;
        if (phase == u"preparing") story.session->open(story.movie, false);
        if (phase == u"failed") story.session->open(QUrl::fromLocalFile(u"/nowhere"_s), false);
        if (phase == u"ready") story.start({});
        story.run(1);
        story.context.choose(u"Den"_s);
        story.run(1);
        EXPECT_EQ(story.stage.players.size() == 2, phase == u"ready");
        EXPECT_EQ(story.session->handingOverTo().has_value(), phase == u"ready");
    }
}

TEST(Handover, theSessionMayEndAtAnyMoment) {
    QList<double> ends{15.02};
    for (double end = 0; end < 32; end += 0.19) ends.append(end);
    for (const double end : ends) {
        Story story;
        story.savePosition(1200);
        story.stage.takenAfter = {{3, 1}};
        story.start(u"Den"_s);
        // The first attempt fails; the second succeeds, then the device drops it during a seek; once more.
        story.run(std::min(end, 15.0));
        if (end > 15) {
            story.stage.answersSeeks = false;
            story.session->seek(100);
            story.stage.player(3).setExternal(false);
            story.run(std::min(end - 15, 3.0));
        }
        if (end > 18) {
            story.session->retryHandover();
            story.run(end - 18);
        }
        story.session.reset();
        EXPECT_EQ(story.stage.alive(), 0) << end;
        EXPECT_TRUE(story.power.held.empty()) << end;
        story.stage.begin();
        story.run(10);
        EXPECT_EQ(story.stage.journal(), QStringList()) << end;
    }
}

}  // namespace
}  // namespace velmora::test
