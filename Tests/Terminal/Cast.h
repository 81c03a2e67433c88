#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace velmora::test {

/// velmora-cast beside media tools that a test scripts: `ffprobe` tells of a movie of 100 seconds with AC-3
/// sound in Matroska, which wants repacking, and `ffmpeg` runs the test's shell commands with $output set.
class CastTest : public testing::Test {
    QTemporaryDir folder_;

  protected:
    CastTest();

    void scriptFfmpeg(const QByteArray& commands) { writeTool(QStringLiteral("ffmpeg"), commands); }
    /// Makes an empty movie; its path.
    QString addMovie(const QString& name);
    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QStringList movies() const;

    const QString program_;

  private:
    void writeTool(const QString& name, const QByteArray& commands);
};

}  // namespace velmora::test
