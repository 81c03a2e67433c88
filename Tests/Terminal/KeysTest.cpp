#include "Terminal/Keys.h"

#include <gtest/gtest.h>

using velmora::Key;
using velmora::KeyReader;

namespace {

TEST(Keys, ReadsWholeAndBrokenSequences) {
    using enum Key;
    const std::pair<QList<QByteArray>, QList<Key>> cases[] = {
        {{" asq"}, {playPause, sound, subtitles, quit}},
        {{"\x1b[C\x1b[D\x1b[A\x1b[B"}, {forward, back, forwardMinute, backMinute}},
        {{"\x1bOC"}, {forward}},
        {{"\x1b", "[", "C"}, {forward}},
        // Delete, Ctrl-Right and Alt-x mean nothing; what follows them counts again.
        {{"\x1b[3~ \x1b[1;5C \x1bxq"}, {playPause, playPause, quit}},
        {{"\x1b\x1b[D"}, {back}},
        {{"xyz\n\xc3\xbc"}, {}},
    };
    for (const auto& [pieces, expected] : cases) {
        KeyReader reader;
        QList<Key> keys;
        for (const QByteArray& piece : pieces) keys += reader.read(piece);
        EXPECT_EQ(keys, expected) << pieces.first().toStdString();
    }
}

}  // namespace
