#include "Interface/Views/Blur.h"
#include "Interface/Views/SessionScreen.h"
#include "Interface/Views/Showcase.h"
#include "Playback/Story.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace velmora::test {
namespace {

using namespace std::chrono_literals;

QStringList texts(const MenuRows& rows) {
    QStringList all;
    for (const MenuRow& row : rows.rows()) all.append(row.text);
    return all;
}

TEST(MenuRows, ChangesRowByRow) {
    MenuRows rows;
    const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const auto row = [](const char* name) {
        return MenuRow{.identifier = QString::fromLatin1(name), .text = QString::fromLatin1(name)};
    };
    const MenuRow a = row("a");
    const MenuRow b = row("b");
    const MenuRow c = row("c");
    rows.show({MenuRow::heading(u"h"_s, u"h"_s), a, b});
    const QPersistentModelIndex keptB(rows.index(2));
    rows.show({b, c, MenuRow::line(u"l"_s), a});
    EXPECT_EQ(texts(rows), (QStringList{u"b"_s, u"c"_s, {}, u"a"_s}));
    EXPECT_EQ(keptB.row(), 0);
    EXPECT_EQ(rows.next(1, 1), 3);
    EXPECT_EQ(rows.next(3, 1), 3);
    QSignalSpy chosen(&rows, &MenuRows::chosen);
    rows.choose(2);
    rows.choose(9);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST(MovieScreenModel, AHandOnTheTimelineSeeksOnceWhenItLetsGo) {
    MovieScreenModel movie;
    QSignalSpy seeks(&movie, &MovieScreenModel::seekRequested);
    const QImage frame(16, 9, QImage::Format_RGB32);
    movie.show(
        MovieArtwork{.poster = {}, .scrubPreview = {}, .thumbnailAt = [frame](double) { return frame; }});
    movie.show(States::waiting());
    movie.drag(100);
    EXPECT_FALSE(movie.isDragging());

    movie.show(States::playing(u"Den"_s));
    for (double time = 0; time < 9000; time += 10) movie.drag(time);
    EXPECT_TRUE(seeks.isEmpty());
    EXPECT_EQ(movie.elapsedText(), u"1:38:20"_s);
    EXPECT_EQ(movie.moviePosition(), 2467);
    EXPECT_FALSE(movie.stillPicture().isNull());
    movie.release();
    ASSERT_EQ(seeks.size(), 1);
    EXPECT_EQ(seeks.first().first().toDouble(), 5900);
    EXPECT_EQ(movie.position(), 2467);

    // The television is lost while the hand is still there.
    movie.drag(50);
    movie.show(States::waiting());
    movie.release();
    EXPECT_EQ(seeks.size(), 1);
    EXPECT_FALSE(movie.isPointing());
}

TEST(RoutePickerModel, ChoosesInTheContextAndCountsDown) {
    VirtualClock clock;
    ScriptedTelevisions televisions;
    ScriptedContext context;
    RoutePickerModel picker(clock, televisions, &context);
    televisions.show({{.identifier = u"d"_s, .name = u"Den"_s, .canForget = true}});
    picker.rows()->choose(1);
    ASSERT_TRUE(context.device);
    EXPECT_EQ(context.device->identifier, u"d"_s);
    EXPECT_EQ(picker.rows()->rows()[1].sign, MenuRow::Sign::chosen);
    picker.rows()->forget(0);
    picker.rows()->forget(1);
    EXPECT_EQ(televisions.forgotten, QStringList{u"d"_s});
    picker.rows()->choose(0);
    EXPECT_FALSE(context.device);

    QSignalSpy wrong(&picker, &RoutePickerModel::wrongAnswered);
    TelevisionQuestion question{.asks = Television::Asks::code, .television = u"Den"_s};
    televisions.ask(question);
    EXPECT_TRUE(picker.asksForCode());
    picker.answer(u"1234"_s);
    question.wasWrong = true;
    question.nextTry = clock.now() + 3s;
    televisions.ask(question);
    EXPECT_EQ(wrong.size(), 1);
    picker.answer(u"1111"_s);
    clock.advance(2s);
    EXPECT_EQ(picker.questionError(), u"That code didn't match. Try again in 0:01."_s);
    clock.advance(1s);
    EXPECT_EQ(picker.questionError(), u"That code didn't match."_s);
    question.nextTry.reset();
    televisions.ask(question);
    picker.answer(u"2222"_s);
    EXPECT_EQ(televisions.answers, (QStringList{u"1234"_s, u"2222"_s}));
    picker.dismiss();
    EXPECT_FALSE(picker.hasQuestion());
}

TEST(RoutePickerModel, NothingMovesWhileTheMenuIsOpen) {
    VirtualClock clock;
    ScriptedTelevisions televisions;
    RoutePickerModel picker(clock, televisions, nullptr);
    picker.setOpen(true);
    EXPECT_EQ(texts(*picker.rows()).last(), u"Looking for televisions…"_s);
    clock.advance(6s);
    EXPECT_EQ(texts(*picker.rows()).last(), u"No television found"_s);
    const Television den{.identifier = u"d"_s, .name = u"Den"_s};
    const Television attic{.identifier = u"a"_s, .name = u"Attic"_s};
    televisions.show({den});
    televisions.show({attic, den});
    EXPECT_EQ(texts(*picker.rows()), (QStringList{u"This computer"_s, u"Den"_s, u"Attic"_s}));
    picker.setOpen(false);
    picker.refresh();
    EXPECT_EQ(texts(*picker.rows()), (QStringList{u"This computer"_s, u"Attic"_s, u"Den"_s}));
}

// A window from nothing to a failure, over a real session.
TEST(SessionScreen, ShowsAndSteersItsSession) {
    Story story;
    MovieScreenModel movie;
    ScriptedTelevisions televisions;
    RoutePickerModel picker(story.clock, televisions, &story.context);
    const SessionScreen screen(*story.session, story.desktop, movie, picker);
    QSignalSpy opened(&picker, &RoutePickerModel::openRequested);
    EXPECT_EQ(movie.screen(), MovieScreenModel::Empty);

    EXPECT_FALSE(movie.drop({QUrl(u"https://example.org/film.mkv"_s)}));
    EXPECT_TRUE(movie.drop({story.movie, QUrl::fromLocalFile(u"/other.mkv"_s)}));
    EXPECT_EQ(movie.screen(), MovieScreenModel::Movie);
    EXPECT_TRUE(movie.isPreparing());
    EXPECT_EQ(movie.playHelp(), u"Choose an Apple TV (Space)"_s);
    Q_EMIT movie.playRequested();
    EXPECT_EQ(opened.size(), 1);
    story.context.choose(u"Den"_s);
    story.clock.advance(500ms);
    EXPECT_EQ(movie.playHelp(), u"Starts on Den when ready"_s);

    story.preparer.jobs.last().finish(std::unexpected(PrepareError{.which = PrepareError::Case::noVideo}));
    EXPECT_EQ(movie.screen(), MovieScreenModel::Failed);
    EXPECT_TRUE(movie.canTranscode());
    Q_EMIT movie.transcodeRequested();
    EXPECT_EQ(story.preparer.jobs.last().asked, u"Film.mkv forced"_s);
    Q_EMIT movie.cancelRequested();
    EXPECT_EQ(movie.discSymbol(), u"play"_s);
    Q_EMIT movie.chooseRequested();
    story.desktop.picked(story.movie);
    EXPECT_TRUE(movie.isPreparing());
}

TEST(Blur, BackdropIsSmallSoftAndDark) {
    QImage poster(1920, 1080, QImage::Format_RGB32);
    poster.fill(Qt::white);
    for (int y = 0; y < 1080; ++y)
        for (int x = 0; x < 960; ++x) poster.setPixelColor(x, y, Qt::black);
    const QImage backdrop = Blur::backdrop(poster);
    EXPECT_EQ(backdrop.size(), QSize(160, 90));
    EXPECT_LT(qGray(backdrop.pixel(5, 45)), 4);
    EXPECT_NEAR(qGray(backdrop.pixel(155, 45)), 217, 3);
    EXPECT_NEAR(qGray(backdrop.pixel(80, 45)), 108, 12);
    EXPECT_TRUE(Blur::backdrop({}).isNull());
}

}  // namespace
}  // namespace velmora::test
