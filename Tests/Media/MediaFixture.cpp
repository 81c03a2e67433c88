#include "Media/MediaFixture.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QtEndian>

#include <sched.h>
#include <sys/mount.h>

namespace velmora::test {

using namespace Qt::StringLiterals;

Ran run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60'000)) return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void writeFile(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    file.write(content);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

namespace {

bool mayMount() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

QString describe(const QJsonObject& stream) {
    const QString kind = stream["codec_type"].toString();
    const QJsonObject tags = stream["tags"].toObject();
    const QJsonObject flags = stream["disposition"].toObject();
    QStringList words{kind, stream["codec_name"].toString()};
    if (kind == u"video"_s) words += {stream["codec_tag_string"].toString(), stream["pix_fmt"].toString()};
    if (kind == u"audio"_s)
        words += {QString::number(stream["channels"].toInt()), tags["language"].toString()};
    if (kind == u"subtitle"_s) {
        words += {tags["language"].toString(), tags["handler_name"].toString()};
        for (const auto* flag : {"default", "forced"}) {
            if (flags[QLatin1StringView(flag)].toInt() == 1) words.append(QString::fromLatin1(flag));
        }
    }
    return words.join(u' ');
}

}  // namespace

std::string streamsOf(const QString& file) {
    const Ran probe = run(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-of"_s, u"json"_s, u"-show_streams"_s, file});
    EXPECT_EQ(probe.errors, "");
    QStringList lines;
    const QJsonArray streams = QJsonDocument::fromJson(probe.output)["streams"].toArray();
    for (const QJsonValue& stream : streams) lines.append(describe(stream.toObject()));
    return lines.join(u'\n').toStdString();
}

std::string subtitleText(const QString& file, std::size_t track) {
    const Ran read = run(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, file, u"-map"_s, u"0:s:%1"_s.arg(track),
                                       u"-f"_s, u"srt"_s, u"-"_s});
    EXPECT_EQ(read.errors, "");
    static const QRegularExpression notText(u"^(\\d+|.* --> .*|)\\n"_s, QRegularExpression::MultilineOption);
    return QString::fromUtf8(read.output).remove(notText).trimmed().toStdString();
}

std::string decodingErrors(const QString& file) {
    // In the file's own time base: in a coarser one two pictures may fall on the same tick.
    return run(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, file, u"-map"_s, u"0:v"_s, u"-map"_s, u"0:a?"_s,
                             u"-enc_time_base"_s, u"-1"_s, u"-f"_s, u"null"_s, u"-"_s})
        .errors.toStdString();
}

QStringList boxesOf(const QString& name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList types;
    for (qint64 offset = 0; offset < file.size();) {
        file.seek(offset);
        const QByteArray header = file.read(16);
        if (header.size() < 8) return {u"damaged"_s};
        auto size = static_cast<qint64>(qFromBigEndian<quint32>(header.constData()));
        if (size == 1) size = qFromBigEndian<qint64>(header.constData() + 8);
        if (size < 8) return {u"damaged"_s};
        types.append(QString::fromLatin1(header.mid(4, 4)));
        offset += size;
    }
    return types;
}

QList<pid_t> childrenOf(pid_t parent) {
    const QDir threads(u"/proc/%1/task"_s.arg(parent));
    QList<pid_t> children;
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(threads.filePath(thread + u"/children"_s));
        if (!file.open(QIODevice::ReadOnly)) continue;
        for (const QByteArray& number : file.readAll().simplified().split(' ')) {
            if (!number.isEmpty()) children.append(number.toInt());
        }
    }
    return children;
}

Mount::Mount(const QString& folder) : folder_(QFile::encodeName(folder)) {
    QDir().mkpath(folder);
}

Mount::~Mount() {
    ::umount2(folder_.constData(), MNT_DETACH);
}

std::unique_ptr<Mount> Mount::disk(const QString& folder, const QByteArray& size) {
    auto mount = std::make_unique<Mount>(folder);
    const bool isThere = mayMount() && ::mount("disk", mount->folder_.constData(), "tmpfs", 0,
                                               QByteArray("size=" + size).constData()) == 0;
    return isThere ? std::move(mount) : nullptr;
}

std::unique_ptr<Mount> Mount::readOnly(const QString& folder) {
    auto mount = std::make_unique<Mount>(folder);
    const char* path = mount->folder_.constData();
    const bool isThere = mayMount() && ::mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                         ::mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    return isThere ? std::move(mount) : nullptr;
}

QString MoviesTest::add(const QString& sample, const QString& name) {
    const QString copy = path(name);
    QDir().mkpath(QFileInfo(copy).path());
    EXPECT_TRUE(QFile::copy(QStringLiteral(VELMORA_SAMPLE_MOVIES "/") + sample, copy)) << qPrintable(sample);
    return copy;
}

QStringList MoviesTest::files() const {
    return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

}  // namespace velmora::test
