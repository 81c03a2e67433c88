#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>

/// What tests with the real tools share: sample movies and a look into the files that come out.
namespace velmora::test {

struct Ran {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};
[[nodiscard]] Ran run(const QString& program, const QStringList& arguments);

void writeFile(const QString& path, const QByteArray& content);

[[nodiscard]] QByteArray contentOf(const QString& path);

/// A line for each stream: kind, codec, tag; pixel format, or channels; language, name and flags.
[[nodiscard]] std::string streamsOf(const QString& file);

/// The text of one subtitle track, without numbers and times.
[[nodiscard]] std::string subtitleText(const QString& file, std::size_t track);

/// What ffmpeg complains of when it decodes all picture and sound.
[[nodiscard]] std::string decodingErrors(const QString& file);

/// The types of the file's outermost boxes, in order.
[[nodiscard]] QStringList boxesOf(const QString& file);

/// The processes that a thread of `parent` has started and that are still there.
[[nodiscard]] QList<pid_t> childrenOf(pid_t parent);

/// A file system mounted for this thread alone while the object lives; absent without the rights to mount.
class Mount {
  public:
    /// An empty disk of `size` ("300k").
    [[nodiscard]] static std::unique_ptr<Mount> disk(const QString& folder, const QByteArray& size);
    [[nodiscard]] static std::unique_ptr<Mount> readOnly(const QString& folder);
    explicit Mount(const QString& folder);
    ~Mount();
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;

  private:
    QByteArray folder_;
};

/// A folder of its own with copies of sample movies.
class MoviesTest : public testing::Test {
  protected:
    /// Copies the sample movie; the path of the copy.
    QString add(const QString& sample, const QString& name);

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

    /// The names of all files, hidden ones too.
    [[nodiscard]] QStringList files() const;

    QTemporaryDir folder_;
};

}  // namespace velmora::test
