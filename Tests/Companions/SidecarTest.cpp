#include "Companions/Sidecar.h"
#include "Companions/SubtitleText.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
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

    /// The found files' paths relative to the folder.
    [[nodiscard]] QStringList found(const QString& movie) const {
        QStringList result;
        for (const Sidecar& sidecar : find(movie)) {
            result.append(QDir(directory_.path()).relativeFilePath(sidecar.url.toLocalFile()));
        }
        return result;
    }

  private:
    QTemporaryDir directory_;
};

TEST(Sidecar, isTakenWhereItBelongsToTheMovie) {
    struct Row {
        QStringList names;
        QString movie;
        QStringList found;
    };
    const std::vector<Row> rows = {
        {{u"A.mkv"_s, u"B.mkv"_s, u"subs/x.srt"_s, u"A.en.SRT"_s, u"x.srt"_s}, u"A.mkv"_s, {u"A.en.SRT"_s}},
        {{u"A.mkv"_s, u"B.mkv"_s, u"subs/x.srt"_s, u"A.en.srt"_s}, u"B.mkv"_s, {}},
        {{u"A.mkv"_s, u"A (Velmora).mp4"_s, u"foo.srt"_s, u"Subs/x.VTT"_s, u"Subs/deep/y.srt"_s,
          u"other/z.srt"_s},
         u"A.mkv"_s,
         {u"foo.srt"_s, u"Subs/x.VTT"_s}},
        {{u"A.mkv"_s, u"A.mp4"_s, u"A.mp4.velmora"_s, u"foo.ass"_s}, u"A.mkv"_s, {u"foo.ass"_s}},
        {{u"A.mkv"_s, u"A.mp4"_s, u".A.mp4.velmora"_s, u"foo.ass"_s}, u"A.mkv"_s, {u"foo.ass"_s}},
        {{u"A.mkv"_s, u"A.mkv.velmora"_s, u"foo.srt"_s, u"a2.srt"_s}, u"A.mkv"_s, {u"a2.srt"_s}},
        {{u"A.mkv"_s, u"A.mp4"_s, u"foo.srt"_s}, u"A.mkv"_s, {}},
        {{u"A.mkv"_s, u"._A.mkv"_s, u"._A.srt"_s, u".h.srt"_s, u"A.txt"_s}, u"A.mkv"_s, {u".h.srt"_s}},
        {{u"Am\u00E9lie.mkv"_s, u"B.mkv"_s, u"Ame\u0301lie.srt"_s},
         u"Am\u00E9lie.mkv"_s,
         {u"Ame\u0301lie.srt"_s}},
        {{u"Ame.mkv"_s, u"B.mkv"_s, u"Ame\u0301.srt"_s}, u"Ame.mkv"_s, {}},
        {{u"A.mkv"_s, u"folder.srt/x.txt"_s}, u"A.mkv"_s, {}},
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        EXPECT_EQ(Folder(rows[row].names).found(rows[row].movie), rows[row].found) << "row " << row;
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
    ASSERT_EQ(found.size(), 4);
    const std::optional<QString> none;
    const std::vector<std::pair<std::optional<QString>, std::optional<QString>>> expected = {
        {u"fra"_s, none}, {u"zho"_s, u"CP1252"_s}, {u"fra"_s, u"CP1252"_s}, {u"nld"_s, none}};
    for (qsizetype row = 0; row < found.size(); ++row) {
        EXPECT_EQ(found[row].language, expected[static_cast<std::size_t>(row)].first) << row;
        EXPECT_EQ(found[row].encoding, expected[static_cast<std::size_t>(row)].second) << row;
        EXPECT_FALSE(found[row].isSDH);
    }
    EXPECT_EQ(found[0].modified, QFileInfo(folder.path(u"A.1.srt"_s)).lastModified());
    EXPECT_EQ(found[3].modified.date(), QDate(1, 1, 1));
}

TEST(SubtitleText, tellsUnicodeFromOldEncodings) {
    const std::map<QByteArray, bool> rows = {
        {"", true},
        {"\xEF\xBB\xBF"
         "1\n",
         true},
        {"\xF0\x9F\x8E\xAC", true},
        {"\xEF\xBF\xBD", true},
        {"caf\xC3", false},
        {"\xF0\x9F\x8E", false},
        {"\xC0\x80", false},
        {"\xED\xA0\x80", false},
        {"\xF4\x90\x80\x80", false},
        {"\x93Zeit\x94", false},
        {QByteArray("\xFF\xFE\xE9\0", 4), true},
        {QByteArray("\xFE\xFF\0\xE9", 4), true},
    };
    for (const auto& [bytes, isUnicode] : rows) {
        EXPECT_EQ(SubtitleText::decode(bytes).isUnicode, isUnicode) << bytes.toHex().constData();
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
