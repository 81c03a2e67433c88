// What goes wrong with real files, disks and processes: the message is right, nothing half-done stays, and an
// older prepared file is not touched.
#include "Media/MediaFixture.h"
#include "Preparation/Conversion.h"
#include "Preparation/Preparer.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <thread>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Case = PrepareError::Case;
using Outcome = std::expected<Preparer::Result, PrepareError>;

/// Polls, as these tests wait for processes that are not ours to be told of.
bool eventually(const std::function<bool()>& holds) {
    for (int attempt = 0; attempt < 6000 && !holds(); ++attempt) std::this_thread::sleep_for(10ms);
    return holds();
}

class Trouble : public test::MoviesTest {
  protected:
    static Outcome prepare(const QString& movie) {
        return Preparer().prepare(QUrl::fromLocalFile(movie), false, [](const Preparer::Update&) {});
    }
    static std::expected<void, PrepareError> convert(const QUrl& movie, const Plan& plan,
                                                     const PartialFile& partial) {
        const Preparer::UpdateCallback ignore = [](const Preparer::Update&) {};
        return Conversion({*Tools::ffmpeg(), movie, plan, 4, {}}, partial, ignore, {}).run();
    }

    /// An older file under the prepared name, as if made by an earlier preparation.
    void addOlder(const QString& prepared) {
        test::writeFile(path(prepared), "older");
        test::writeFile(path(u'.' + prepared + u".velmora"_s), "of another day");
    }
    void expectOlderUntouched(const QString& movie, const QString& prepared) {
        EXPECT_EQ(files(), (QStringList{u'.' + prepared + u".velmora"_s, movie, prepared}));
        EXPECT_EQ(test::contentOf(path(prepared)), "older");
        EXPECT_EQ(test::contentOf(path(u'.' + prepared + u".velmora"_s)), "of another day");
    }
};

TEST_F(Trouble, BrokenFilesAreRefused) {
    const QByteArray whole = test::contentOf(add(u"as-is.mp4"_s, u"whole.mp4"_s));
    QByteArray noise(100'000, '\0');
    for (char& byte : noise) byte = static_cast<char>(std::rand());
    QFile::remove(path(u"whole.mp4"_s));
    struct Row {
        const char* what;
        QByteArray content;
        Case expected;
    };
    const QByteArray sound = test::contentOf(add(u"sound.mka"_s, u"sound.mka"_s));
    QFile::remove(path(u"sound.mka"_s));
    for (const Row& row :
         {Row{"noise", noise, Case::probeFailed}, Row{"no index", whole.first(200'000), Case::probeFailed},
          Row{"empty", "", Case::probeFailed}, Row{"text", "hello\n", Case::probeFailed},
          Row{"sound only", sound, Case::noVideo}}) {
        test::writeFile(path(u"M.mkv"_s), row.content);
        addOlder(u"M.mp4"_s);
        const Outcome outcome = prepare(path(u"M.mkv"_s));
        ASSERT_FALSE(outcome) << row.what;
        EXPECT_EQ(outcome.error().which, row.expected)
            << row.what << qPrintable(outcome.error().errorDescription());
        expectOlderUntouched(u"M.mkv"_s, u"M.mp4"_s);
    }
    EXPECT_EQ(prepare(path(u"vanished.mkv"_s)).error().which, Case::unreadable);
    EXPECT_NE(prepare(folder_.path()).error().errorDescription(), QString());
}

TEST_F(Trouble, WithoutPermissionNothingIsRead) {
    const QString movie = add(u"h264.mkv"_s, u"M.mkv"_s);
    QFile::setPermissions(movie, {});
    // Root may read everything, so this thread becomes somebody else for a moment.
    const auto becomeUser = [](long user) { return ::syscall(SYS_setresuid, user, user, -1); };
    const bool isRoot = ::getuid() == 0;
    ASSERT_TRUE(!isRoot || becomeUser(65534) == 0);
    const Outcome outcome = prepare(movie);
    if (isRoot) becomeUser(0);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().which, Case::unreadable);
}

TEST_F(Trouble, IndexThatNeedsMoreRoomThanReserved) {
    const QUrl movie = QUrl::fromLocalFile(add(u"hevc.mkv"_s, u"M.mkv"_s));
    auto plan = Plan::make(*MediaProbe::probe(movie, *Tools::ffprobe()), {}, false, {});
    plan->moovReserve = 1000;
    const PartialFile partial(QUrl::fromLocalFile(path(u"M.mp4"_s)));
    ASSERT_TRUE(convert(movie, *plan, partial));
    EXPECT_EQ(test::decodingErrors(partial.url().toLocalFile()), "");
    EXPECT_EQ(test::boxesOf(partial.url().toLocalFile()).first(2), (QStringList{u"ftyp"_s, u"moov"_s}));
}

TEST_F(Trouble, FullDisk) {
    const QUrl movie = QUrl::fromLocalFile(add(u"h264.mkv"_s, u"M.mkv"_s));
    const QString disk = path(u"disk"_s);
    auto plan = Plan::make(*MediaProbe::probe(movie, *Tools::ffprobe()), {}, false, {});
    plan->moovReserve = 200'000;
    // The second is large enough for the movie, but not for the index: ffmpeg then ends with status 0.
    for (const char* size : {"300k", "450k"}) {
        const auto mount = test::Mount::disk(disk, size);
        if (!mount) GTEST_SKIP() << "mounting takes root";
        {
            const PartialFile partial(QUrl::fromLocalFile(disk + u"/M.mp4"_s));
            const auto outcome = convert(movie, *plan, partial);
            ASSERT_FALSE(outcome) << size;
            EXPECT_TRUE(outcome.error().detail.contains(u"No space left on device"_s)) << size;
        }
        EXPECT_EQ(QDir(disk).entryList(QDir::Files), QStringList()) << size;
    }
    const auto mount = test::Mount::disk(disk, "100m");
    EXPECT_EQ(prepare(add(u"h264.mkv"_s, u"disk/M.mkv"_s)).error().which, Case::notEnoughSpace);
    EXPECT_EQ(QDir(disk).entryList(QDir::Files | QDir::Hidden), QStringList{u"M.mkv"_s});
}

TEST_F(Trouble, ReadOnlyFolder) {
    const QString movie = add(u"h264.mkv"_s, u"stick/M.mkv"_s);
    {
        const auto mount = test::Mount::readOnly(path(u"stick"_s));
        if (!mount) GTEST_SKIP() << "mounting takes root";
        const Outcome first = prepare(movie);
        ASSERT_TRUE(first) << qPrintable(first.error().errorDescription());
        EXPECT_EQ(first->file.toLocalFile(), QDir::homePath() + u"/Videos/Velmora/M.mp4"_s);
        EXPECT_EQ(prepare(movie)->note, u"Prepared earlier, reusing"_s);
    }
    // Another movie of the same name does not pass for this one.
    QFile::remove(movie);
    add(u"silent.mkv"_s, u"stick/M.mkv"_s);
    const auto mount = test::Mount::readOnly(path(u"stick"_s));
    EXPECT_EQ(prepare(movie)->note, u"Repacking for Apple TV, no re-encode"_s);
}

#ifdef VELMORA_CAST
/// The same from outside, as a program that is killed or runs twice.
class TroubleOfProcesses : public Trouble {
  protected:
    static void start(QProcess& process, const QString& movie, bool force) {
        QStringList arguments{u"--prepare-only"_s, movie};
        if (force) arguments.insert(1, u"--re-encode"_s);
        process.start(QStringLiteral(VELMORA_CAST), arguments);
        ASSERT_TRUE(process.waitForStarted());
    }
};

TEST_F(TroubleOfProcesses, KilledOneLeavesNoFfmpegAndDoesNotBlock) {
    const QString movie = add(u"long.mkv"_s, u"Long.mkv"_s);
    addOlder(u"Long.mp4"_s);
    QProcess process;
    start(process, movie, true);
    const auto partial = [this] { return QFileInfo(path(u"Long.mp4.part"_s)).size() > 0; };
    ASSERT_TRUE(eventually(partial));
    const QList<pid_t> children = test::childrenOf(static_cast<pid_t>(process.processId()));
    ASSERT_EQ(children.size(), 1);
    process.kill();
    process.waitForFinished();
    EXPECT_TRUE(eventually([&] { return ::kill(children.first(), 0) != 0; }));
    EXPECT_TRUE(partial());
    EXPECT_EQ(test::contentOf(path(u"Long.mp4"_s)), "older");

    EXPECT_EQ(prepare(movie)->note, u"Repacking for Apple TV, no re-encode"_s);
    EXPECT_EQ(files(), (QStringList{u".Long.mp4.velmora"_s, u"Long.mkv"_s, u"Long.mp4"_s}));
    EXPECT_EQ(test::boxesOf(path(u"Long.mp4"_s)).count(u"mdat"_s), 1);
}

TEST_F(TroubleOfProcesses, ManyAtOnceMakeOneFile) {
    const QString movie = add(u"long.mkv"_s, u"Long.mkv"_s);
    std::array<QProcess, 4> processes;
    for (QProcess& process : processes) start(process, movie, false);
    for (QProcess& process : processes) {
        EXPECT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        EXPECT_EQ(process.readAllStandardOutput().trimmed(), QFile::encodeName(path(u"Long.mp4"_s)));
    }
    EXPECT_EQ(files(), (QStringList{u".Long.mp4.velmora"_s, u"Long.mkv"_s, u"Long.mp4"_s}));
    EXPECT_EQ(test::decodingErrors(path(u"Long.mp4"_s)), "");
    EXPECT_EQ(prepare(movie)->note, u"Prepared earlier, reusing"_s);
}
#endif

}  // namespace
}  // namespace velmora
