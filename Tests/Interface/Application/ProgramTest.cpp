#include <QProcess>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

/// Its exit status and what it printed.
std::pair<int, QByteArray> run(const QStringList& arguments) {
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(VELMORA), arguments);
    EXPECT_TRUE(program.waitForFinished());
    return {program.exitCode(), program.readAllStandardOutput()};
}

TEST(Program, AnswersWithoutAWindow) {
    EXPECT_TRUE(run({u"--help"_s}).second.contains("--new-window"));
    EXPECT_TRUE(run({u"--version"_s}).second.startsWith("velmora "));
    EXPECT_EQ(run({u"--nonsense"_s}).first, 2);
    EXPECT_EQ(run({u"-platform"_s, u"xcb"_s, u"-display"_s, u":nowhere"_s}).first, 1) << "no desktop";
}

}  // namespace
