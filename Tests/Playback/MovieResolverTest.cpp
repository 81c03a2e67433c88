#include "Playback/MovieResolver.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>

using namespace Qt::StringLiterals;
using velmora::resolveMovie;

namespace {

using Entry = std::pair<QString, int>;  ///< name and size; a name ending in "/" is a folder

TEST(MovieResolver, PicksTheLargestMovieThatIsNoPreparedCopy) {
    struct Case {
        QList<Entry> entries;
        QString asked;
        QString found;
    };
    const Case cases[] = {
        {{{u"Movie.mkv"_s, 10}, {u"Movie (Velmora).mp4"_s, 20}, {u"sample.mkv"_s, 2}}, {}, u"Movie.mkv"_s},
        {{{u"Movie.mkv"_s, 10}, {u"Movie.mkv.velmora"_s, 1}}, {}, {}},
        {{{u"Movie.mkv"_s, 10}, {u"Movie.mp4"_s, 20}, {u".Movie.mp4.velmora"_s, 1}}, {}, u"Movie.mkv"_s},
        {{{u"A.mp4"_s, 10}, {u"A.mp4.orvane"_s, 1}, {u"B.M2TS"_s, 1}}, {}, u"B.M2TS"_s},
        {{{u"A (Orvane).mp4"_s, 9}, {u"notes.txt"_s, 99}, {u"clip.mkv/"_s, 0}}, {}, {}},
        {{{u"Movie.mkv"_s, 10}, {u"lone.srt"_s, 1}}, u"lone.srt"_s, u"Movie.mkv"_s},
        {{{u"lone.ssa"_s, 1}}, u"lone.ssa"_s, {}},
        {{{u"odd.xyz"_s, 1}, {u"Movie.mkv"_s, 10}}, u"../{}/odd.xyz"_s, u"odd.xyz"_s},
        {{{u"empty.mkv"_s, 0}}, {}, u"empty.mkv"_s},
        {{}, u"missing.mkv"_s, {}},
    };
    for (const Case& expected : cases) {
        const QTemporaryDir folder;
        for (const auto& [name, size] : expected.entries) {
            if (name.endsWith(u'/')) {
                ASSERT_TRUE(QDir(folder.path()).mkdir(name));
                continue;
            }
            QFile file(folder.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(size));
        }
        QString asked = expected.asked;
        asked.replace(u"{}"_s, QDir(folder.path()).dirName());
        const auto found = resolveMovie(QUrl::fromLocalFile(folder.path() + u'/' + asked));
        if (expected.found.isEmpty())
            EXPECT_EQ(found, std::nullopt) << asked.toStdString();
        else
            EXPECT_EQ(found, QUrl::fromLocalFile(folder.filePath(expected.found))) << asked.toStdString();
    }
}

}  // namespace
