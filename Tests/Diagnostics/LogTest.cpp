#include "Diagnostics/Log.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

/// Every test logs into a state folder of its own.
class Log : public testing::Test {
  protected:
    Log() {
        qputenv("XDG_STATE_HOME", QFile::encodeName(state_.path()));
        Diagnostics::setStandardErrorFallback(false);
    }
    ~Log() override {
        qputenv("XDG_STATE_HOME", before_);
        Diagnostics::setStandardErrorFallback(true);
    }

    /// The log with each time stamp replaced by T.
    [[nodiscard]] QString withoutTimes() const {
        static const QRegularExpression time(u"^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} "_s,
                                             QRegularExpression::MultilineOption);
        QFile file(state_.filePath(u"Logs/Velmora/velmora.log"_s));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).replace(time, u"T "_s)
                                              : u"no file"_s;
    }

    const QByteArray before_ = qgetenv("XDG_STATE_HOME");
    const QTemporaryDir state_;
};

TEST_F(Log, everyStartAppendsLines) {
    {
        Diagnostics log;
        log.notice(u"probe: été"_s);
        log.error({});
    }
    Diagnostics().notice(u"one\ntwo %1"_s);
    EXPECT_EQ(withoutTimes(), u"T [notice] probe: été\nT [error] \nT [notice] one\ntwo %1\n"_s);
}

TEST_F(Log, linesOfManyThreadsAndTwoWritersStayWhole) {
    constexpr int threadCount = 8;
    constexpr int lineCount = 300;
    const QString filler(200, u'x');
    {
        Diagnostics logs[2];
        std::vector<std::jthread> threads;
        threads.reserve(threadCount);
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&, thread] {
                for (int line = 0; line < lineCount; ++line) {
                    logs[thread % 2].notice(u"%1 %2 %3"_s.arg(thread).arg(line).arg(filler));
                }
            });
        }
    }
    std::vector<int> next(threadCount, 0);
    for (const QString& line : withoutTimes().split(u'\n', Qt::SkipEmptyParts)) {
        const QStringList words = line.split(u' ');
        ASSERT_EQ(words.size(), 5) << qPrintable(line);
        EXPECT_EQ(words[3].toInt(), next.at(words[2].toUInt())++);
        EXPECT_EQ(words[4], filler);
    }
    EXPECT_EQ(next, std::vector<int>(threadCount, lineCount));
}

TEST_F(Log, standardErrorStandsInUnlessToldNotTo) {
    qputenv("XDG_STATE_HOME", "/dev/null");  // no folder can be made in it
    testing::internal::CaptureStderr();
    Diagnostics::setStandardErrorFallback(true);
    Diagnostics().error(u"no disk"_s);
    Diagnostics::setStandardErrorFallback(false);  // as a program that draws on the terminal does
    Diagnostics().error(u"silence"_s);
    const std::string written = testing::internal::GetCapturedStderr();
    if (QFile::exists(u"/run/systemd/journal/socket"_s)) GTEST_SKIP() << "the journal has it";
    EXPECT_TRUE(written.starts_with("com.quillet.velmora session ")) << written;
    EXPECT_TRUE(written.ends_with(" [error] no disk\n")) << written;
}

TEST_F(Log, nothingIsLostAtExit) {
    const auto logUntilTheEnd = [] {
        std::atexit([] { logger().notice(u"after the log's own end"_s); });
        // Long enough for the process to be gone before it is written, if nobody waited.
        logger().notice(QString(1 << 24, u'x') + u" last"_s);
        std::thread([] {
            while (true) logger().error(u"still running"_s);
        }).detach();
        std::exit(0);  // NOLINT(concurrency-mt-unsafe): that is the subject
    };
    EXPECT_EXIT(logUntilTheEnd(), testing::ExitedWithCode(0), "");
    const QString written = withoutTimes();
    EXPECT_TRUE(written.contains(u"x last\n"_s));
    EXPECT_TRUE(written.contains(u"after the log's own end\n"_s));
}

}  // namespace
}  // namespace velmora
