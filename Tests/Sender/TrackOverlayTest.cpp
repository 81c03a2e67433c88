#include "Sender/Boxes.h"
#include "Sender/TrackOverlay.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace test::Boxes;

std::expected<QList<BytePatch>, QString> overlay(const QByteArray& movie, const TrackChoice& choice) {
    QTemporaryFile file;
    if (!file.open() || file.write(movie) != movie.size() || !file.flush())
        return std::unexpected(QStringLiteral("the disk is full"));
    return trackOverlay(file.handle(), movie.size(), choice);
}

/// The flags of every track header, as they are served: "7 6" is one that is on and one that is not.
std::string served(QByteArray movie, const TrackChoice& choice) {
    const auto patches = overlay(movie, choice);
    if (!patches) return patches.error().toStdString();
    const QByteArray before = movie;
    for (const BytePatch& patch : *patches) {
        EXPECT_NE(movie[patch.offset], patch.value) << "needs no patch";
        movie[patch.offset] = patch.value;
    }
    std::string flags;
    for (qsizetype at = movie.indexOf("tkhd"); at >= 0; at = movie.indexOf("tkhd", at + 1)) {
        flags += char('0' + movie[at + 7]);
        EXPECT_EQ(movie.sliced(at, 7), before.sliced(at, 7));
    }
    return flags;
}

TrackChoice choice(int audio, int subtitle, int audioCount = 2, int subtitleCount = 2) {
    return {.audio = TrackChoice::Track{audio, audioCount},
            .subtitle = TrackChoice::Track{subtitle, subtitleCount}};
}

TEST(TrackOverlay, EnablesWhatIsChosenAndNothingElse) {
    const QByteArray usual = movie(tracks());
    const QByteArray names = track("text", header(6, false)) +
                             track("soun", header(7, true), box("tref", box("chap", number(0) + number(6))));
    const struct {
        const char* what;
        QByteArray movie;
        TrackChoice choice;
        const char* flags;
    } cases[] = {
        {"as it is", usual, choice(1, 1), "77676"},
        {"the others", usual, choice(2, 2), "76767"},
        {"no subtitles", usual, choice(2, 0), "76766"},
        {"one kind only", usual, {.audio = {}, .subtitle = TrackChoice::Track{2, 2}}, "77667"},
        {"nothing at all, of no movie", "no movie", {}, ""},
        {"index behind, wide sizes, an open end",
         wideBox("mdat", QByteArray(99, 'm')) + number(0) + "moov" + tracks(), choice(2, 2), "76767"},
        {"long times, padding", movie(track("soun", header(9, false, 1)) + QByteArray(6, '\0')),
         choice(1, 0, 1, 0), "7"},
        {"two on at once",
         movie(track("soun", header(1, true)) + track("clcp", header(2, true)) +
               track("soun", header(3, true))),
         choice(2, 1, 2, 1), "677"},
        {"chapters are no subtitles", movie(names + track("text", header(8, false))), choice(1, 1, 1, 1),
         "677"},
    };
    for (const auto& [what, movie, choice, flags] : cases) EXPECT_EQ(served(movie, choice), flags) << what;
}

TEST(TrackOverlay, LeavesFilesAloneThatItDoesNotUnderstand) {
    const QByteArray sound = track("soun", header(1, true));
    QByteArray manyBoxes;
    for (int one = 0; one < 30'000; ++one) manyBoxes += box("free", {});
    const auto claiming = [&sound](quint32 size) { return movie(number(size) + sound.sliced(4)); };
    const struct {
        const char* what;
        QByteArray movie;
    } cases[] = {
        {"empty", {}},
        {"too short for a box", "abc"},
        {"no index", box("ftyp", "isom") + box("mdat", QByteArray(50, 'm'))},
        {"endless padding in front", manyBoxes + movie(sound)},
        {"endless padding inside", movie(manyBoxes + sound)},
        {"other tracks than were chosen from", movie(sound + sound)},
        {"breaks off", movie(sound).first(150)},
        {"a track larger than the index", claiming(1 << 30)},
        {"a track smaller than its head", claiming(7)},
        {"a wide size without its number", box("moov", number(1) + "trak")},
        {"a wide size beyond all numbers",
         movie(number(1) + "trak" + number(0xffffffff) + number(0xffffffff) + sound)},
        {"a header cut short", movie(track("soun", box("tkhd", QByteArray(23, '\0'))))},
        {"no header", movie(track("soun", {}))},
        {"a handler cut short",
         movie(box("trak", header(1, true) + box("mdia", box("hdlr", QByteArray(11, '\0')))))},
        {"too many references",
         movie(track("soun", header(1, true), box("tref", box("chap", QByteArray(4000, '\0')))))},
    };
    for (const auto& [what, movie] : cases)
        EXPECT_FALSE(overlay(movie, choice(1, 0, 1, 0)).has_value()) << what;
    EXPECT_EQ(overlay(movie(sound), choice(1, 0, 1, 0)), QList<BytePatch>()) << "the measure of all these";
    // The size that is told counts, not what the file has grown to.
    QTemporaryFile grown;
    ASSERT_TRUE(grown.open() && grown.write(movie(sound)) > 0 && grown.flush());
    EXPECT_FALSE(trackOverlay(grown.handle(), 20, choice(1, 0, 1, 0)).has_value());
    EXPECT_FALSE(trackOverlay(-1, 1000, choice(1, 0, 1, 0)).has_value());
}

}  // namespace
}  // namespace velmora
