#include "Platform/Linux/FileEngine.h"
#include "Support/WaitFor.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;

TEST(FileEngine, TellsTheLengthAndKeepsThePlace) {
    const LocalEngine::Maker make = FileEngine::maker();
    const std::unique_ptr<LocalEngine> first = make();
    LocalEngine& engine = *first;
    QStringList news;
    QObject::connect(&engine, &FileEngine::ready, [&] { news += u"ready"_s; });
    QObject::connect(&engine, &FileEngine::failed, [&](const QString& reason) { news += reason; });
    const auto note = [&news](const QString& name) {
        return [&news, name](bool finished) { news += name + (finished ? u" landed"_s : u" given up"_s); };
    };
    engine.seek(3, LocalEngine::Seek::exact, note(u"without a file"_s));
    engine.load(QStringLiteral(VELMORA_SAMPLE_MOVIES "/long.mkv"));
    engine.seek(10, LocalEngine::Seek::exact, note(u"first"_s));
    engine.seek(42, LocalEngine::Seek::exact, note(u"second"_s));
    ASSERT_TRUE(waitFor([&] { return news.size() == 4; }));
    EXPECT_EQ(news, (QStringList{u"without a file given up"_s, u"first given up"_s, u"ready"_s,
                                 u"second landed"_s}));
    EXPECT_NEAR(engine.duration().value_or(0), 100, 0.5);
    EXPECT_EQ(engine.position(), 42);

    const std::unique_ptr<LocalEngine> second = make();
    second->load(QStringLiteral(VELMORA_SAMPLE_MOVIES "/long.mkv"));
    QCoreApplication::processEvents();
    EXPECT_EQ(second->duration(), engine.duration()) << "at once";

    second->load(QStringLiteral(VELMORA_SAMPLE_MOVIES "/languages.mp4"));
    ASSERT_TRUE(waitFor([&] { return second->isReady(); }));
    QStringList tracks;
    for (const LocalEngine::Track& track : second->tracks())
        tracks += u"%1 %2%3"_s.arg(track.number).arg(track.language, track.isSelected ? u" on"_s : u""_s);
    EXPECT_EQ(tracks, (QStringList{u"1 eng on"_s, u"2 deu"_s, u"1 eng on"_s, u"2 deu"_s}));
    const std::unique_ptr<LocalEngine> third = make();
    third->load(QStringLiteral(VELMORA_SAMPLE_MOVIES "/languages.mp4"));
    QCoreApplication::processEvents();
    EXPECT_EQ(third->tracks(), second->tracks());

    engine.load(u"/nowhere/movie.mkv"_s);
    EXPECT_EQ(engine.position(), 0) << "of the new file";
    ASSERT_TRUE(waitFor([&] { return news.size() == 5; }));
    EXPECT_EQ(news.last(), u"The movie cannot be opened."_s);
    EXPECT_EQ(engine.position(), std::nullopt);
}

}  // namespace
}  // namespace velmora
