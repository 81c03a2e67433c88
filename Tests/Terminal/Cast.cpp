#include "Terminal/Cast.h"

#include <QDir>
#include <QFile>

#include <filesystem>

namespace velmora::test {

using namespace Qt::StringLiterals;

constexpr const char* probed = R"(cat <<'JSON'
{"streams": [{"index": 0, "codec_type": "video", "codec_name": "h264", "pix_fmt": "yuv420p",
              "width": 320, "height": 180},
             {"index": 1, "codec_type": "audio", "codec_name": "ac3", "channels": 6}],
 "format": {"format_name": "matroska,webm", "duration": "100.0", "size": "1000"}}
JSON
)";

CastTest::CastTest() : program_(folder_.filePath(u"bin/velmora-cast"_s)) {
    QDir(folder_.path()).mkdir(u"bin"_s);
    // Tools beside the executable come before all others, so the executable comes here.
    namespace files = std::filesystem;
    const files::path copy = program_.toStdString();
    std::error_code failed;
    files::create_hard_link(VELMORA_CAST, copy, failed);
    if (failed) files::copy_file(VELMORA_CAST, copy);
    writeTool(u"ffprobe"_s, probed);
}

void CastTest::writeTool(const QString& name, const QByteArray& commands) {
    QFile tool(path(u"bin/"_s + name));
    ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
    tool.write("#!/bin/sh\nfor output; do :; done\n" + commands);
    tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QString CastTest::addMovie(const QString& name) {
    QFile movie(path(name));
    EXPECT_TRUE(movie.open(QIODevice::WriteOnly));
    return movie.fileName();
}

QStringList CastTest::movies() const {
    return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

}  // namespace velmora::test
