#include "Playback/Story.h"

#include <cmath>

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;
using Phase = Session::Phase;

TEST(Session, opensWhatTheLocationMeans) {
    struct Case {
        QString location;
        QString prepared;
        QString failure;
    };
    const Case cases[] = {{u"Film.mkv"_s, u"Film.mkv"_s, {}},
                          {u"x/../Film.mkv"_s, u"Film.mkv"_s, {}},
                          {{}, u"Film.mkv"_s, {}},
                          {u"lone.srt"_s, u"Film.mkv"_s, {}},
                          {u"missing.mkv"_s, {}, u"No movie found at missing.mkv."_s},
                          {u"Empty Folder"_s, {}, u"No movie found at Empty Folder."_s},
                          {u"Empty Folder/"_s, {}, u"No movie found at Empty Folder."_s}};
    for (const Case& expected : cases) {
        Story story;
        QDir(story.folder.path()).mkdir(u"Empty Folder"_s);
        story.addFile(u"lone.srt"_s);
        story.session->open(QUrl::fromLocalFile(story.folder.filePath(expected.location)), false);
        if (expected.prepared.isEmpty()) {
            EXPECT_EQ(story.session->phase(), Phase(Phase::Failure{{}, expected.failure, false}));
            EXPECT_EQ(story.session->title(), u"Velmora"_s);
            continue;
        }
        ASSERT_EQ(story.preparer.jobs.size(), 1) << expected.location.toStdString();
        EXPECT_EQ(story.preparer.jobs[0].asked, expected.prepared);
        EXPECT_EQ(story.desktop.recent, QList{story.movie});
        EXPECT_EQ(story.preferences.values.value(u"lastMovie"_s), story.movie.toLocalFile());
        EXPECT_EQ(story.session->phase(),
                  Phase(Phase::Preparation{story.movie, {}, u"Looking at the file…"_s, {}}));
    }
}

TEST(Session, followsThePreparationUntilItEndsOrIsCancelled) {
    Story story;
    Session& session = *story.session;
    session.open(story.movie, true);
    const auto update = story.preparer.update;
    update({0.5, u"Repacking"_s, 30});
    EXPECT_EQ(session.phase(), Phase(Phase::Preparation{story.movie, 0.5, u"Repacking"_s, 30}));
    story.preparer.jobs[0].finish(std::unexpected(PrepareError{PrepareError::Case::noVideo}));
    const QString words = PrepareError{PrepareError::Case::noVideo}.errorDescription();
    EXPECT_EQ(session.phase(), Phase(Phase::Failure{story.movie, words, false})) << "re-encoding was tried";
    EXPECT_TRUE(story.log.take().contains(u"[error] prepare failed: "_s + words));
    update({0.6, u"Late"_s, {}});
    EXPECT_TRUE(session.phase().failed());

    session.open(story.movie, false);
    story.preparer.jobs[1].finish(std::unexpected(PrepareError{PrepareError::Case::noVideo}));
    EXPECT_TRUE(session.phase().failed()->canTranscode);

    session.open(story.movie, false);
    session.open(story.movie, false);
    EXPECT_FALSE(story.preparer.jobs[2].isWanted());
    session.cancel();
    EXPECT_FALSE(story.preparer.jobs[3].isWanted());
    EXPECT_TRUE(session.phase().isIdle());
    EXPECT_EQ(session.lastMovie(), (Session::LastMovie{story.movie, {}, {}}));

    session.revealInFinder();
    story.start({});
    EXPECT_EQ(session.title(), u"Film"_s);
    session.revealInFinder();
    EXPECT_EQ(story.desktop.revealed, QList{session.phase().ready()->file});
    session.chooseFile();
    EXPECT_EQ(story.desktop.dialog->title, u"Choose a movie"_s);
    EXPECT_TRUE(story.desktop.dialog->extensions.contains(u"mkv"_s));
    story.session.reset();
    story.desktop.picked(story.movie);
}

TEST(Session, bringsASubtitleNextToItsMovie) {
    struct Case {
        QString subtitle;
        int copies;  // there already
        QString added;
    };
    const Case cases[] = {
        {u"elsewhere/Film.dut.SRT"_s, 0, u"Film.nld.srt"_s},
        {u"elsewhere/Film.nl.srt"_s, 2, u"Film.nld.3.srt"_s},
        {u"elsewhere/notes.srt"_s, 0, u"Film.srt"_s},
        {u"elsewhere/Film.nl.srt"_s, 20, {}},
        {u"elsewhere/../Film.nl.srt"_s, 0, {}},
    };
    for (const Case& expected : cases) {
        Story story;
        const QUrl subtitle = story.addFile(expected.subtitle, "1\n");
        for (int copy = 1; copy <= expected.copies; ++copy)
            story.addFile(copy == 1 ? u"Film.nld.srt"_s : u"Film.nld.%1.srt"_s.arg(copy), "old");
        story.session->open(story.movie, false);
        (void)story.log.take();
        story.session->open(subtitle, true);
        const bool fails = expected.copies == 20;
        EXPECT_EQ(story.preparer.jobs.last().asked, fails ? u"Film.mkv"_s : u"Film.mkv forced"_s);
        if (fails) {
            EXPECT_EQ(story.session->phase(),
                      Phase(Phase::Failure{{}, u"Couldn't copy Film.nl.srt next to the movie."_s, false}));
        }
        const QStringList added = story.log.take().filter(u"subtitle added: "_s);
        EXPECT_EQ(added.value(0),
                  expected.added.isEmpty() ? QString() : u"subtitle added: "_s + expected.added);
        EXPECT_TRUE(expected.added.isEmpty() || QFile::exists(story.folder.filePath(expected.added)));
    }
}

TEST(Session, offersTheLastMovieToTheFirstWindowOnly) {
    Story story;
    story.session.reset();
    story.world.hasOfferedLastMovie = false;
    story.preferences.values = {{story.key(u"position:"_s), 10.0}};
    story.artwork.posters.insert(story.movie, QImage(2, 2, QImage::Format_RGB32));
    story.earlier.values = {{u"lastMovie"_s, story.movie.toLocalFile()},
                            {story.key(u"position:"_s), 500.0},
                            {story.key(u"duration:"_s), 4000.0},
                            {u"finished:/a"_s, true},
                            {u"windowFrame"_s, u"1 2"_s}};
    const Session first(story.world, nullptr);
    const Session second(story.world, nullptr);
    const QMap<QString, QVariant> migrated{{u"lastMovie"_s, story.movie.toLocalFile()},
                                           {story.key(u"position:"_s), 10.0},
                                           {story.key(u"duration:"_s), 4000.0},
                                           {u"finished:/a"_s, true},
                                           {u"migratedFromOrvane"_s, true}};
    EXPECT_EQ(story.preferences.values, migrated) << "what was known already stays";
    EXPECT_EQ(first.lastMovie(), (Session::LastMovie{story.movie, {}, 4000}));
    EXPECT_EQ(first.savedTimeline(), (Session::Timeline{0, 4000}));
    EXPECT_FALSE(first.poster().isNull());
    EXPECT_EQ(second.lastMovie(), std::nullopt);

    story.preferences.values.remove(u"finished:/a"_s);
    QFile::remove(story.movie.toLocalFile());
    story.world.hasOfferedLastMovie = false;
    const Session later(story.world, nullptr);
    EXPECT_FALSE(story.preferences.values.contains(u"finished:/a"_s)) << "taken over once";
    EXPECT_EQ(later.lastMovie(), std::nullopt) << "it is no longer there";
}

TEST(Session, theMainButtonDoesWhatComesNext) {
    Story story;
    ScriptedPicker picker;
    Session& session = *story.session;
    session.airPlay().setPickerAnchor(&picker);
    session.playAction();
    EXPECT_FALSE(session.canPlayAction()) << "nothing to play";

    story.savePosition(300);
    session.open(story.movie, false);
    session.cancel();
    EXPECT_TRUE(session.canPlayAction() && session.canStartOver());
    session.playAction();
    EXPECT_TRUE(session.phase().preparing());
    EXPECT_EQ(picker.timesShown, 1);
    session.playAction();
    EXPECT_EQ(picker.timesShown, 2) << "choose a device while the movie is prepared";
    story.finishPreparing();
    session.playAction();
    EXPECT_EQ(picker.timesShown, 3);
    session.seek(20);
    session.togglePlayPause();
    EXPECT_FALSE(session.isPlaying() || session.isSeeking() || session.canStartOver())
        << "this computer only shows where it is";
    EXPECT_TRUE(session.showsLiveFrame());

    session.cancel();
    session.startOver();
    EXPECT_FALSE(story.preferences.values.contains(story.key(u"position:"_s)));
    EXPECT_EQ(picker.timesShown, 4);

    story.startOnTelevision();
    session.playAction();
    EXPECT_FALSE(session.isPlaying()) << "a pause on the television";
    session.playAction();
    EXPECT_TRUE(session.isPlaying() && session.canPlayAction() && !session.showsLiveFrame());
}

TEST(Session, seeksWithinTheMovieAndOnlyTheLastSeekCounts) {
    struct Case {
        double wanted;
        QString asked;
    };
    const Case cases[] = {
        {7200, u"5399"_s}, {-4, u"0"_s}, {NAN, u"0"_s}, {0.4, u"0.4"_s}, {5399.5, u"5399"_s}};
    Story story;
    story.startOnTelevision();
    story.run(1);
    Session& session = *story.session;
    for (const Case& expected : cases) {
        story.stage.begin();
        session.seek(expected.wanted);
        EXPECT_EQ(story.stage.journal(), QStringList{u"0 2 seek %1 or before"_s.arg(expected.asked)});
        EXPECT_EQ(session.currentTime(), expected.asked.toDouble()) << "at once";
        story.run(1);
        EXPECT_FALSE(session.isSeeking());
    }

    story.artwork.posterJobs.last().finish(false);
    session.setScrubPreview(QImage(2, 2, QImage::Format_RGB32));
    session.seek(100);
    story.run(0.1);
    session.seek(200);
    story.run(0.15);
    EXPECT_TRUE(session.isSeeking()) << "the first one's end is not the second's";
    EXPECT_EQ(session.currentTime(), 200);
    story.run(0.1);
    EXPECT_TRUE(!session.isSeeking() && session.scrubPreview().isNull());
    EXPECT_EQ(story.artwork.posterJobs.last().asked, u"Film.mkv 200"_s);
    EXPECT_EQ(story.preferences.values.value(story.key(u"position:"_s)), 200.0);

    story.stage.answersSeeks = false;
    session.seek(300);
    story.run(3);
    session.seek(400);
    story.run(4.9);
    EXPECT_TRUE(session.isSeeking()) << "five seconds from the last one";
    story.run(0.1);
    EXPECT_FALSE(session.isSeeking());

    session.startOver();
    EXPECT_FALSE(story.preferences.values.contains(story.key(u"position:"_s)));
    EXPECT_EQ(session.currentTime(), 0);
}

TEST(Session, remembersThePlaceEveryFiveSecondsOnPausesAndAtTheEnd) {
    Story story;
    story.startOnTelevision();
    const QString position = story.key(u"position:"_s);
    const auto saved = [&] { return story.preferences.values.value(position).toDouble(); };
    ScriptedPlayer& player = story.stage.player(2);
    player.setPosition(1000);
    story.run(4.9);
    EXPECT_EQ(saved(), 0);
    story.run(0.2);
    EXPECT_NEAR(saved(), 1005, 0.5);
    story.run(3);
    story.session->togglePlayPause();
    EXPECT_NEAR(saved(), 1008, 0.5);
    player.play();
    player.setPosition(2000);
    QMetaObject::invokeMethod(story.session.get(), "prepareToQuit");
    EXPECT_EQ(saved(), 2000);
    EXPECT_EQ(story.preferences.synchronized, 1);
    player.setPosition(3000);
    story.session.reset();
    EXPECT_EQ(saved(), 3000) << "a window that closes";
    EXPECT_EQ(story.preferences.values.value(story.key(u"duration:"_s)), 5400.0);
}

TEST(Session, tellsWhyPlaybackFailed) {
    const QString unexpected = u"The movie stopped unexpectedly."_s;
    for (const bool isForced : {false, true}) {
        for (const QString& error : {u"Cannot decode"_s, QString()}) {
            Story story;
            story.stage.takenAfter = {{2, 0}};
            story.context.choose(u"Den"_s);
            story.run(1);
            story.session->open(story.movie, isForced);
            story.finishPreparing();
            story.run(2);
            Q_EMIT story.session->player()->currentItem()->failedToPlayToEnd(error);
            EXPECT_EQ(story.session->phase(),
                      Phase(Phase::Failure{story.movie, error.isEmpty() ? unexpected : error, !isForced}));
            EXPECT_FALSE(story.session->isOnAppleTV() || story.session->isPlaying());
        }
    }
    for (const QString& deviceName : {QString(), u"Den"_s}) {
        Story story;
        story.stage.itemError = u"Not a movie"_s;
        story.start(deviceName);
        story.run(20);
        EXPECT_EQ(story.session->phase(), Phase(Phase::Failure{story.movie, u"Not a movie"_s, true}));
        EXPECT_EQ(story.session->handingOverTo(), std::nullopt);
        EXPECT_TRUE(story.log.take().contains(u"item status 2 error=Not a movie"_s));
    }
}

TEST(Session, loadsTracksAndSwitchesOnWhatSuits) {
    const auto option = [](const QString& id, const QString& language, const QString& name = u"Track"_s) {
        return MediaOption{.identifier = id, .displayName = name, .language = language};
    };
    MediaOption forced = option(u"f"_s, u"nl"_s);
    forced.hasOnlyForcedSubtitles = true;
    MediaOption described = option(u"d"_s, u"dut"_s);
    described.describesSound = true;
    MediaOption untracked = option(u"u"_s, u"nld"_s);
    untracked.isTrack = false;
    const MediaOption english = option(u"e"_s, u"en-GB"_s, u"English"_s);
    const MediaOption dutch = option(u"n"_s, u"nl"_s);
    struct Case {
        QList<MediaOption> subtitles;
        QStringList titles;
        std::optional<MediaOption> flagged;
        QString on;
        QStringList names;
    };
    const MediaOption dutchToo = option(u"m"_s, u"nl"_s);
    const Case cases[] = {
        {{english, dutch}, {u"English"_s, u"Dutch"_s}, {}, u"n"_s, {u"English"_s, u"Dutch"_s}},
        {{english, dutch}, {u"English"_s}, english, u"e"_s, {u"English"_s, u"Track"_s}},
        {{forced, untracked, described, dutch}, {}, {}, u"n"_s, {{}, {}, u"Track"_s, u"Track 2"_s}},
        {{dutch, dutchToo}, {u"D (SDH)"_s, u"D"_s}, {}, u"m"_s, {u"D (SDH)"_s, u"D"_s}},
        {{described}, {}, {}, u"d"_s, {u"Track"_s}},
        {{option(u"g"_s, u"de"_s)}, {}, {}, {}, {u"Track"_s}},
        {{forced}, {}, {}, {}, {QString()}},
    };
    for (const Case& expected : cases) {
        for (const qsizetype audioTracks : {1, 2}) {
            Story story;
            story.titles = expected.titles;
            story.stage.subtitles = MediaGroup{MediaGroup::Kind::legible, expected.subtitles};
            QList<MediaOption> audio{option(u"1"_s, u"en"_s, u"English"_s),
                                     option(u"2"_s, u"en"_s, u"English"_s)};
            audio.resize(audioTracks);
            story.stage.audio = MediaGroup{MediaGroup::Kind::audible, audio};
            story.stage.selected.insert(MediaGroup::Kind::audible, audio[0]);
            if (expected.flagged) story.stage.selected.insert(MediaGroup::Kind::legible, *expected.flagged);
            story.start({});
            story.run(3.9);
            EXPECT_EQ(story.session->subtitleGroup(), std::nullopt) << "four seconds after the item";
            story.run(0.2);

            Session& session = *story.session;
            QStringList names;
            for (const auto& track : expected.subtitles)
                names += session.trackNames().value(track.identifier);
            EXPECT_EQ(names, expected.names);
            EXPECT_EQ(session.trackNames().value(u"1"_s), u"English"_s);
            EXPECT_EQ(session.audioGroup().has_value(), audioTracks == 2);
            EXPECT_EQ(session.selectedAudio(), audio[0]);
            EXPECT_EQ(session.selectedSubtitle().value_or(MediaOption{}).identifier, expected.on);
            const bool switches = !expected.flagged && !expected.on.isEmpty();
            EXPECT_EQ(story.log.take().filter(u"subtitles: switched on "_s).size(), switches ? 1 : 0);
            EXPECT_EQ(story.stage.journal().filter(u"select"_s).size(), switches ? 1 : 0);

            session.select({}, MediaGroup::Kind::legible);
            EXPECT_EQ(session.selectedSubtitle(), std::nullopt);
            EXPECT_EQ(session.player()->currentItem()->selected(MediaGroup::Kind::legible), std::nullopt);
        }
    }
}

// Every choice that comes later than the first picture interrupts it.
TEST(Session, takesTheTracksAlongToTheDevice) {
    using Kind = MediaGroup::Kind;
    const auto option = [](const QString& id, const QString& language) {
        return MediaOption{.identifier = id, .displayName = language, .language = language};
    };
    const QList<MediaOption> texts{option(u"de"_s, u"deu"_s), option(u"nl"_s, u"nld"_s)};
    const QList<MediaOption> sounds{option(u"1"_s, u"eng"_s), option(u"2"_s, u"nld"_s)};
    const auto begin = [&](Story& story, const QString& device) {
        story.stage.subtitles = MediaGroup{Kind::legible, texts};
        story.stage.audio = MediaGroup{Kind::audible, sounds};
        story.stage.selected.insert(Kind::audible, sounds[0]);
        story.stage.takenAfter = {{2, 2}, {3, 2}};
        story.start(device);
        story.run(8);
    };
    const auto selections = [](Story& story) { return story.stage.journal().filter(u"select"_s); };
    {
        Story story;
        begin(story, u"Den"_s);
        EXPECT_EQ(selections(story), QStringList(u"0.3 select nl"_s)) << "once the file is read";
        EXPECT_EQ(story.session->selectedSubtitle(), texts[1]);
        EXPECT_EQ(story.log.take().filter(u"subtitles: switched on "_s).size(), 1);
    }
    for (const auto& text : {std::optional(texts[0]), std::optional<MediaOption>()}) {
        Story story;
        begin(story, {});
        Session& session = *story.session;
        session.select(sounds[1], Kind::audible);
        session.select(text, Kind::legible);
        const QString asked = text ? text->identifier : u"nothing"_s;
        // There, and back.
        for (const QString& device : {u"Den"_s, QString()}) {
            story.stage.begin();
            story.context.device.reset();
            if (!device.isEmpty()) story.context.choose(device);
            story.run(10);
            const QStringList made = selections(story);
            EXPECT_EQ(made.size(), 2) << made.join(u'|').toStdString();
            EXPECT_EQ(made.filter(u"select "_s + asked).size(), 1);
            EXPECT_EQ(made.filter(u"select 2"_s).size(), 1);
            EXPECT_EQ(session.selectedAudio(), sounds[1]);
            EXPECT_EQ(session.selectedSubtitle(), text);
        }
        // Another movie has tracks of its own.
        story.session->open(story.addFile(u"Other.mkv"_s, "f"), false);
        story.finishPreparing();
        story.run(5);
        EXPECT_EQ(session.selectedAudio(), sounds[0]);
        EXPECT_EQ(session.selectedSubtitle(), texts[1]);
    }
}

TEST(Session, fillsPosterAndTimeline) {
    Story story;
    story.preferences.set(story.key(u"position:"_s), 700.0);
    const auto asked = [&] {
        QStringList lines;
        for (const auto& job : story.artwork.posterJobs) lines.append(job.asked.section(u' ', 1));
        return lines;
    };
    Session& session = *story.session;
    story.start({});
    EXPECT_EQ(asked(), (QStringList{u"700"_s, u"700"_s})) << "while preparing, and once there is a picture";
    story.artwork.posterJobs[0].finish(true);
    EXPECT_TRUE(session.poster().isNull()) << "a file that cannot be read";
    story.artwork.posters.insert(story.movie, QImage(2, 2, QImage::Format_RGB32));
    story.artwork.posterJobs[1].finish(true);
    EXPECT_FALSE(session.poster().isNull());

    const auto strip = std::make_shared<Thumbnails>(story.folder.path(), 5, 3);
    story.artwork.stripJobs[0].finish(strip);
    EXPECT_EQ(session.thumbnails(), strip);
    const QUrl other = story.addFile(u"Other.mkv"_s, "f");
    session.open(other, false);
    EXPECT_TRUE(session.poster().isNull());
    story.finishPreparing();
    EXPECT_EQ(session.thumbnails(), nullptr) << "another movie's";
    session.open(story.movie, false);
    story.artwork.strips.insert(story.movie, strip);
    story.artwork.stripJobs[1].finish(nullptr);
    for (const auto& job : story.artwork.posterJobs) job.finish(false);
    story.artwork.posterJobs.clear();

    story.startOnTelevision();
    EXPECT_EQ(session.thumbnails(), strip);
    EXPECT_EQ(asked(), QStringList()) << "it has one, and a handover is no time for it";
    story.run(61);
    ASSERT_EQ(asked().size(), 1) << "every minute";
    session.togglePlayPause();
    EXPECT_EQ(asked().size(), 1) << "one at a time";
    story.artwork.posterJobs[0].finish(true);
    session.togglePlayPause();
    session.togglePlayPause();
    EXPECT_EQ(asked().size(), 2) << "on a pause";
}

}  // namespace
}  // namespace velmora::test
