#include "Platform/Linux/SettingsFile.h"
#include "Support/WaitFor.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>

using namespace Qt::StringLiterals;
using velmora::SettingsFile;
using velmora::test::waitFor;

namespace {

class SettingsFileTest : public testing::Test {
  protected:
    /// A domain that no other test has.
    const QString domain_ = u"test."_s + QUuid::createUuid().toString(QUuid::Id128);
    const QString path_ = SettingsFile(domain_).path();

    void writeFile(const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(path_).path());
        QFile file(path_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
};

TEST_F(SettingsFileTest, KeepsValuesTypesAndOddKeysAcrossStarts) {
    const QString oddKey = u"position:/films/A \"b\" \\ c\n\t\u0001 ü 電影 \U0001F3AC %20 {}.mkv"_s;
    const QString loneSurrogate = u"position:/films/"_s + QChar(0xD83C) + u".mkv"_s;
    {
        SettingsFile settings(domain_);
        settings.set(oddKey, 2232.25);
        settings.set(loneSurrogate, 600.0);
        settings.set(u"finished:/a.mkv"_s, true);
        settings.set(u"lastMovie"_s, u"12"_s);
    }
    const SettingsFile settings(domain_);
    EXPECT_EQ(settings.value(oddKey), QVariant(2232.25));
    EXPECT_EQ(settings.value(u"finished:/a.mkv"_s), QVariant(true));
    EXPECT_EQ(settings.value(u"lastMovie"_s), QVariant(u"12"_s));
    // A whole number is still a double: nobody may compare it as an integer after the next start.
    const auto whole = settings.value(loneSurrogate);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->typeId(), QMetaType::Double);
    EXPECT_EQ(settings.keys().size(), 4);
    EXPECT_EQ(QFileInfo(path_).permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(SettingsFileTest, WritesFromTheEventLoopAndKeepsWhatItDoesNotUnderstand) {
    writeFile(R"({"list": [1, 2], "gone": 1, "kept": "yes"})");
    SettingsFile settings(domain_);
    settings.set(u"new"_s, 1);
    settings.set(u"nonsense"_s, std::numeric_limits<double>::quiet_NaN());
    settings.remove(u"gone"_s);
    EXPECT_EQ(settings.value(u"gone"_s), std::nullopt);
    EXPECT_EQ(settings.value(u"list"_s), std::nullopt);
    QCoreApplication::processEvents();
    // On its way to the disk now; what changes meanwhile follows it there.
    EXPECT_EQ(settings.value(u"new"_s), QVariant(1.0));
    settings.set(u"new"_s, 2);
    EXPECT_EQ(settings.value(u"new"_s), QVariant(2.0));
    EXPECT_EQ(settings.value(u"gone"_s), std::nullopt);

    EXPECT_TRUE(waitFor([this] {
        QFile file(path_);
        return file.open(QIODevice::ReadOnly) &&
               file.readAll().simplified() == R"({ "kept": "yes", "list": [ 1, 2 ], "new": 2 })";
    }));
    EXPECT_EQ(settings.value(u"new"_s), QVariant(2.0));
}

TEST_F(SettingsFileTest, ProcessesAtOnceLoseNoKeys) {
    constexpr int processes = 4;
    constexpr int keysEach = 10;
    for (int process = 0; process < processes; ++process) {
        if (fork() != 0) continue;
        {
            SettingsFile settings(domain_);
            for (int key = 0; key < keysEach; ++key) {
                settings.set(u"%1/%2"_s.arg(process).arg(key), key);
                settings.synchronize();
            }
        }
        _exit(0);
    }
    for (int process = 0; process < processes; ++process) {
        int status = -1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(SettingsFile(domain_).keys().size(), processes * keysEach);
    EXPECT_FALSE(QFile::exists(path_ + u".lock"_s));
}

TEST_F(SettingsFileTest, SeesWhatAnotherProcessWroteUnlessItHasItsOwnChange) {
    SettingsFile mine(domain_);
    mine.set(u"shared"_s, u"mine"_s);
    SettingsFile other(domain_);
    other.set(u"shared"_s, u"other"_s);
    other.set(u"theirs"_s, true);
    other.synchronize();
    EXPECT_EQ(mine.value(u"theirs"_s), QVariant(true));
    EXPECT_EQ(mine.value(u"shared"_s), QVariant(u"mine"_s));
    mine.synchronize();
    EXPECT_EQ(other.value(u"shared"_s), QVariant(u"mine"_s));
}

TEST_F(SettingsFileTest, SetsADamagedFileAside) {
    for (const QByteArray damaged : {"", "{\"a\": 1", "[1]", "\xff\xfe"}) {
        writeFile(damaged);
        SettingsFile settings(domain_);
        EXPECT_EQ(settings.value(u"a"_s), std::nullopt);
        settings.set(u"a"_s, 2);
        settings.synchronize();
        EXPECT_EQ(SettingsFile(domain_).value(u"a"_s), QVariant(2.0));
        QFile aside(path_ + u".damaged"_s);
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
        EXPECT_EQ(aside.readAll(), damaged);
    }
}

TEST_F(SettingsFileTest, LivesInMemoryWhereNothingCanBeWritten) {
    // A folder where the file should be stops even the superuser.
    ASSERT_TRUE(QDir().mkpath(path_));
    SettingsFile settings(domain_);
    settings.set(u"a"_s, 1.5);
    settings.synchronize();
    EXPECT_EQ(settings.value(u"a"_s), QVariant(1.5));
    settings.remove(u"a"_s);
    EXPECT_EQ(settings.value(u"a"_s), std::nullopt);
}

}  // namespace
