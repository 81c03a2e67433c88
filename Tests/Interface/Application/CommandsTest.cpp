#include "Interface/Application/CommandModel.h"
#include "Interface/Application/PreparationWatch.h"
#include "Playback/Story.h"

#include <QSignalSpy>

#include <utility>

namespace velmora::test {
namespace {

using enum Command;

/// The titles of what is enabled, with their keys.
QStringList enabled(const CommandContext& context) {
    QStringList lines;
    for (const CommandRow& row : commandTable(context))
        if (row.isEnabled) lines << (row.title + u" "_s + row.shortcut.toString()).trimmed();
    return lines;
}

TEST(Commands, AreEnabledAsTheSessionIs) {
    const QStringList always{u"New Window Ctrl+N"_s, u"Open Movie… Ctrl+O"_s, u"Open Folder… Ctrl+Shift+O"_s,
                             u"Quit Ctrl+Q"_s};
    EXPECT_EQ(enabled({}), always) << "no window has the focus";

    Story story;
    const auto now = [&] {
        QStringList lines = enabled({CommandContext::of(*story.session), false});
        for (const QString& line : always + QStringList{u"Close Window Ctrl+W"_s})
            EXPECT_EQ(lines.removeAll(line), 1);
        return lines;
    };
    EXPECT_EQ(now(), QStringList()) << "empty";

    story.stage.takenAfter = {{2, 1}};
    story.context.choose(u"Den"_s);
    story.run(1);
    story.session->open(story.movie, false);
    EXPECT_EQ(now(), QStringList{u"Cancel Preparing Ctrl+."_s}) << "it starts by itself when it is ready";
    story.finishPreparing();
    EXPECT_EQ(now(), QStringList{u"Reveal Prepared Movie Ctrl+Shift+R"_s}) << "on its way";
    story.run(10);
    const QStringList onTelevision{u"Start Over"_s, u"Back 10 Seconds Left"_s, u"Forward 10 Seconds Right"_s,
                                   u"Back 1 Minute Shift+Left"_s, u"Forward 1 Minute Shift+Right"_s};
    const QString reveal = u"Reveal Prepared Movie Ctrl+Shift+R"_s;
    EXPECT_EQ(now(), QStringList({reveal, u"Pause Space"_s}) + onTelevision);
    perform(playOrPause, *story.session);
    EXPECT_EQ(now(), QStringList({reveal, u"Play Space"_s}) + onTelevision);

    story.session->open(QUrl::fromLocalFile(u"/nowhere.mkv"_s), false);
    EXPECT_EQ(now(), QStringList()) << "failed";
    EXPECT_TRUE(enabled({{}, true}).contains(u"Check for Updates…"_s));
}

TEST(Commands, SteerTheSession) {
    Story story;
    story.stage.takenAfter = {{2, 1}};
    story.start(u"Den"_s);
    story.run(20);
    perform(playOrPause, *story.session);
    story.session->seek(100);
    story.run(1);
    const std::pair<Command, double> seeks[] = {
        {forwardTenSeconds, 110}, {forwardOneMinute, 170}, {backTenSeconds, 160},
        {backOneMinute, 100},     {startOver, 0},          {backOneMinute, 0},
    };
    for (const auto& [command, position] : seeks) {
        EXPECT_TRUE(perform(command, *story.session));
        EXPECT_DOUBLE_EQ(story.session->currentTime(), position);
        story.run(1);
    }
    perform(revealPreparedMovie, *story.session);
    EXPECT_EQ(story.desktop.revealed.size(), 1);
    perform(openMovie, *story.session);
    EXPECT_TRUE(story.desktop.dialog);
    perform(cancelPreparing, *story.session);
    EXPECT_TRUE(story.session->phase().ready()) << "nothing is being prepared";
    for (const Command command : {newWindow, checkForUpdates, closeWindow, quit})
        EXPECT_FALSE(perform(command, *story.session));
}

TEST(CommandModel, TellsOfChangesAndRunsOnlyWhatIsEnabledNow) {
    CommandContext context{.movie = CommandContext::Movie{.canPlayAction = true}};
    QList<Command> ran;
    CommandModel model([&] { return context; }, [&](Command command) { ran << command; });
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    constexpr int play = static_cast<int>(playOrPause);
    const auto title = [&] { return model.rows()[play].title; };
    EXPECT_EQ(title(), u"Play"_s);
    model.refresh();
    EXPECT_TRUE(changes.isEmpty());
    context.movie->isPlaying = true;
    model.refresh();
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex().row(), play);
    EXPECT_EQ(title(), u"Pause"_s);
    model.trigger(play);
    context.movie->canPlayAction = false;
    model.trigger(play);
    model.trigger(-1);
    model.trigger(model.rowCount());
    EXPECT_EQ(ran, QList<Command>{playOrPause}) << "the second came after it was disabled";
}

TEST(PreparationWatch, SpeaksUpAfterALongOneThatNobodyWatches) {
    const QUrl movie(u"file:///m/Film.mkv"_s);
    const SessionPhase ready(
        SessionPhase::Playback{.source = movie, .file = {}, .note = {}, .subtitleTitles = {}});
    const SessionPhase failed(SessionPhase::Failure{.source = movie, .message = u"It broke."_s});
    using Message = PreparationWatch::Message;
    const struct {
        SessionPhase end;
        double seconds;
        bool isInFront;
        std::optional<Message> message;
    } cases[] = {
        {ready, 20, false, Message{u"Film"_s, u"Ready to play."_s}},
        {ready, 19.9, false, {}},
        {ready, 500, true, {}},
        {failed, 500, false, Message{u"Couldn't get “Film” ready"_s, u"It broke."_s}},
        {SessionPhase(), 500, false, {}},
    };
    for (const auto& each : cases) {
        PreparationWatch watch;
        const Clock::Instant begin{seconds(1000)};
        const auto preparing = [&](double progress) {
            return SessionPhase(
                SessionPhase::Preparation{.source = movie, .progress = progress, .stage = {}});
        };
        EXPECT_FALSE(watch.note(preparing(0), begin, false));
        EXPECT_FALSE(watch.note(preparing(0.9), begin + seconds(each.seconds / 2), false));
        EXPECT_EQ(watch.note(each.end, begin + seconds(each.seconds), each.isInFront), each.message);
        EXPECT_FALSE(watch.note(each.end, begin + seconds(2000), false)) << "once";
    }
}

}  // namespace
}  // namespace velmora::test
