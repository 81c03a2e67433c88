#include "Companions/Sidecar.h"
#include "Companions/SubtitleText.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

/// A folder of files, to be asked for the sidecars of one of them.
class Folder {
  public:
    explicit Folder(const QStringList& names) {
        for (const QString& name : names) write(name, {});
    }

    void write(const QString& name, const QByteArray& content) {
        const QString path = directory_.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) ADD_FAILURE();
    }

    [[nodiscard]] QString path(const QString& name) const { return directory_.filePath(name); }

    [[nodiscard]] QList<Sidecar> find(const QString& movie) const {
        return Sidecar::find(QUrl::fromLocalFile(path(movie)));
    }

  private:
    QTemporaryDir directory_;
};

TEST(Sidecar, isTakenWhereItBelongsToTheMovie) {
    // The names in the folder, the movie first, and what is found for it.
    const QString rows =
        u"A.mkv|B.mkv|subs/x.srt|A.en.SRT|x.srt=A.en.SRT;B.mkv|A.mkv|subs/x.srt|A.en.srt=;"
        "A.mkv|A (Velmora).mp4|f.srt|Subs/x.VTT|Subs/deep/y.srt|other/z.srt=f.srt|Subs/x.VTT;"
        "A.mkv|A.mp4|A.mp4.velmora|f.ass=f.ass;A.mkv|A.mp4|.A.mp4.velmora|f.ass=f.ass;"
        "A.mkv|A.mkv.velmora|f.srt|a2.srt=a2.srt;A.mkv|A.mp4|f.srt=;A.mkv|._A.mkv|._A.srt|.h.srt|A.txt=.h."
        "srt;"
        "Am\u00E9lie.mkv|B.mkv|Ame\u0301lie.srt=Ame\u0301lie.srt;Amn.mkv|B.mkv|Amn\u0332.srt=;"
        "A.mkv|folder.srt/x.txt="_s;
    for (const QString& row : rows.split(u';')) {
        const QStringList names = row.section(u'=', 0, 0).split(u'|');
        const Folder folder(names);
        QStringList found;
        for (const Sidecar& sidecar : folder.find(names.constFirst())) {
            found.append(sidecar.url.toLocalFile().mid(folder.path({}).size() + 1));
        }
        EXPECT_EQ(found.join(u'|'), row.section(u'=', 1)) << qPrintable(row);
    }
    EXPECT_TRUE(Sidecar::find(QUrl(u"file:///nowhere/at/all.mkv"_s)).isEmpty());
}

TEST(Sidecar, ranksByWhatTheNamesShare) {
    const Folder folder({u"The.Night.2019.1080p.BluRay.x264.mkv"_s, u"a.srt"_s, u"B.srt"_s, u"\uFF21.srt"_s,
                         u"\U0001F3AC.srt"_s, u"night-BLURAY(2019)the.night.srt"_s,
                         u"the.night.2019.1080p.bluray.X264.EN.hi.srt"_s, u"x264.10bit.Forced.srt"_s});
    const QList<Sidecar> found = folder.find(u"The.Night.2019.1080p.BluRay.x264.mkv"_s);
    QStringList names;
    QList<qint64> scores;
    for (const Sidecar& sidecar : found) {
        names.append(sidecar.url.fileName());
        scores.append(sidecar.score);
    }
    EXPECT_EQ(scores, (QList<qint64>{1000, 12, 5, 0, 0, 0, 0}));
    EXPECT_EQ(names.mid(3), (QStringList{u"B.srt"_s, u"a.srt"_s, u"\uFF21.srt"_s, u"\U0001F3AC.srt"_s}));
    EXPECT_TRUE(found[0].isSDH);
    EXPECT_EQ(found[0].language, u"eng"_s);
    EXPECT_TRUE(found[2].isForced);
    EXPECT_FALSE(found[2].isSDH);
}

TEST(Sidecar, describesTheText) {
    Folder folder({u"A.mkv"_s});
    folder.write(u"A.1.srt"_s, QByteArray("garçon le la les ").repeated(30));
    folder.write(u"A.2.chinese.srt"_s, QByteArray("gar\xE7on le la les ").repeated(30));
    folder.write(u"A.3.srt"_s, QByteArray("gar\xE7on le la les ").repeated(30));
    ASSERT_TRUE(QFile::link(u"nowhere"_s, folder.path(u"A.4.nl.srt"_s)));
    ASSERT_EQ(mkfifo(QFile::encodeName(folder.path(u"A.5.srt"_s)).constData(), 0600), 0);
    const QList<Sidecar> found = folder.find(u"A.mkv"_s);
    QStringList described;
    for (const Sidecar& sidecar : found) {
        described.append(sidecar.language.value_or(u"?"_s) + u' ' + sidecar.encoding.value_or(u"as is"_s));
        EXPECT_FALSE(sidecar.isSDH);
    }
    ASSERT_EQ(described, (QStringList{u"fra as is"_s, u"zho CP1252"_s, u"fra CP1252"_s, u"nld as is"_s}));
    EXPECT_EQ(found[0].modified, QFileInfo(folder.path(u"A.1.srt"_s)).lastModified());
    EXPECT_EQ(found[3].modified.date(), QDate(1, 1, 1));
}

TEST(SubtitleText, tellsUnicodeFromOldEncodings) {
    for (const char* unicode : {"", "efbbbf310a", "f09f8eac", "efbfbd", "fffee900", "feff00e9"}) {
        EXPECT_TRUE(SubtitleText::decode(QByteArray::fromHex(unicode)).isUnicode) << unicode;
    }
    for (const char* old : {"636166c3", "f09f8e", "c080", "eda080", "f4908080", "935a65697494"}) {
        EXPECT_FALSE(SubtitleText::decode(QByteArray::fromHex(old)).isUnicode) << old;
    }
    EXPECT_EQ(SubtitleText::decode(QByteArrayView("\xFE\xFF\0\xE9", 4)).text, u"\u00E9"_s);
    EXPECT_EQ(SubtitleText::decode("\x93Zeit\x94 \x80").text, u"\u201CZeit\u201D \u20AC"_s);
}

TEST(SubtitleText, judgesALongFileAsAWholeButKeepsLittle) {
    Folder folder({});
    const QByteArray character = QByteArrayLiteral("\xF0\x9F\x8E\xAC");
    folder.write(u"long.srt"_s, "abc" + character.repeated(200'000));
    const SubtitleText good = SubtitleText::read(folder.path(u"long.srt"_s)).value_or(SubtitleText{});
    EXPECT_TRUE(good.isUnicode);
    EXPECT_EQ(good.text, u"abc"_s + u"\U0001F3AC"_s.repeated(SubtitleText::longest - 3));

    folder.write(u"long.srt"_s, character.repeated(200'000) + "\xE9");
    const SubtitleText bad = SubtitleText::read(folder.path(u"long.srt"_s)).value_or(SubtitleText{});
    EXPECT_FALSE(bad.isUnicode);
    EXPECT_EQ(bad.text.size(), SubtitleText::longest);
}

}  // namespace
