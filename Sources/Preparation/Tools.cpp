#include "Preparation/Tools.h"

#include "Preparation/ChildProcess.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace velmora::Tools {
namespace {

using namespace Qt::StringLiterals;
using SteadyClock = std::chrono::steady_clock;

/// A pipe's usual capacity, so one read empties it.
constexpr qsizetype readSize = 65'536;

const QString& ownFolder() {
    static const QString folder = QCoreApplication::applicationDirPath();
    return folder;
}

bool isExecutableFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    struct stat information = {};
    return stat(name.constData(), &information) == 0 && S_ISREG(information.st_mode) &&
           access(name.constData(), X_OK) == 0;
}

/// What a run has read so far, and the lines of it.
class Collector {
  public:
    enum class Stream { out, err };

    explicit Collector(const LineCallback& onLine) : onLine_(onLine) {}

    void append(QByteArrayView bytes, Stream stream) {
        if (stream == Stream::err) {
            err_.append(bytes);
            return;
        }
        out_.append(bytes);
        if (onLine_) deliverLines(bytes);
    }

    /// Delivers a last line that no line feed ended.
    void flush() {
        if (!pendingLine_.isEmpty()) onLine_(QString::fromUtf8(std::exchange(pendingLine_, {})));
    }

    [[nodiscard]] Output result(int status) && { return {status, std::move(out_), std::move(err_)}; }

  private:
    void deliverLines(QByteArrayView bytes) {
        for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n')) {
            pendingLine_.append(bytes.first(end));
            bytes = bytes.sliced(end + 1);
            onLine_(QString::fromUtf8(std::exchange(pendingLine_, {})));
        }
        pendingLine_.append(bytes);
    }

    const LineCallback& onLine_;
    QByteArray out_;
    QByteArray err_;
    QByteArray pendingLine_;  ///< standard output after the last line feed; stays empty without a callback
};

/// Reads what is there, at most `limit` bytes; closes the pipe at its end.
qsizetype readSome(FileDescriptor& pipe, qsizetype limit, Collector& collector, Collector::Stream stream) {
    QByteArray buffer(std::min(limit, readSize), Qt::Uninitialized);
    const ssize_t count = read(pipe.number(), buffer.data(), static_cast<std::size_t>(buffer.size()));
    if (count > 0) {
        collector.append(QByteArrayView(buffer).first(count), stream);
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        pipe.close();
    }
    return std::max<qsizetype>(count, 0);
}

/// Reads what the pipe holds now. Not to its end: a grandchild may keep it open for ever.
void drain(FileDescriptor& pipe, Collector& collector, Collector::Stream stream) {
    int left = 0;
    if (!pipe.isOpen() || ioctl(pipe.number(), FIONREAD, &left) != 0) return;
    while (left > 0) {
        const qsizetype count = readSome(pipe, left, collector, stream);
        if (count == 0) return;
        left -= static_cast<int>(count);
    }
}

/// One run from the start of its child to its end, on the caller's thread.
class Supervisor {
  public:
    Supervisor(ChildProcess& child, const FileDescriptor& stopRequested, const LineCallback& onLine,
               std::chrono::milliseconds grace)
        : child_(child), stopRequested_(stopRequested), collector_(onLine), grace_(grace) {}

    Output untilEnd() {
        while (!step()) {
        }
        drain(child_.standardOutput, collector_, Collector::Stream::out);
        drain(child_.standardError, collector_, Collector::Stream::err);
        collector_.flush();
        return std::move(collector_).result(child_.wait());
    }

  private:
    /// Waits for something to happen and deals with it; true when the child has ended.
    bool step() {
        std::array<pollfd, 4> events{{{child_.standardOutput.number(), POLLIN, 0},
                                      {child_.standardError.number(), POLLIN, 0},
                                      {stopping_ ? -1 : stopRequested_.number(), POLLIN, 0},
                                      {child_.ended.number(), POLLIN, 0}}};
        if (poll(events.data(), events.size(), timeLeft()) < 0) return false;
        if (events[0].revents != 0) {
            readSome(child_.standardOutput, readSize, collector_, Collector::Stream::out);
        }
        if (events[1].revents != 0) {
            readSome(child_.standardError, readSize, collector_, Collector::Stream::err);
        }
        if (events[2].revents != 0) terminate();
        if (killAt_ && SteadyClock::now() >= *killAt_) killChild();
        return events[3].revents != 0;
    }

    void terminate() {
        stopping_ = true;
        killAt_ = SteadyClock::now() + grace_;
        child_.signal(SIGTERM);
    }

    void killChild() {
        killAt_.reset();
        child_.signal(SIGKILL);
    }

    [[nodiscard]] int timeLeft() const {
        if (!killAt_) return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*killAt_ - SteadyClock::now());
        return std::max(0, static_cast<int>(left.count()));
    }

    ChildProcess& child_;
    const FileDescriptor& stopRequested_;
    Collector collector_;
    std::chrono::milliseconds grace_;
    bool stopping_ = false;
    std::optional<SteadyClock::time_point> killAt_;
};

}  // namespace

std::optional<QUrl> find(const QString& name) {
    QStringList folders{ownFolder(), u"/opt/homebrew/bin"_s, u"/usr/local/bin"_s, u"/opt/local/bin"_s};
    folders += qEnvironmentVariable("PATH").split(u':', Qt::SkipEmptyParts);
    for (const QString& folder : folders) {
        const QString path = QDir(folder).absoluteFilePath(name);
        if (isExecutableFile(path)) return QUrl::fromLocalFile(path);
    }
    return {};
}

const std::optional<QUrl>& ffmpeg() {
    static const std::optional<QUrl> tool = find(u"ffmpeg"_s);
    return tool;
}

const std::optional<QUrl>& ffprobe() {
    static const std::optional<QUrl> tool = find(u"ffprobe"_s);
    return tool;
}

bool isBundled() {
    const std::optional<QUrl>& tool = ffmpeg();
    return tool && tool->toLocalFile().startsWith(ownFolder());
}

QString Output::stderrText() const {
    return QString::fromUtf8(standardError);
}

std::expected<Output, std::error_code> run(const QUrl& tool, const QStringList& arguments,
                                           const std::stop_token& stop, const LineCallback& onLine,
                                           std::chrono::milliseconds grace) {
    const bool stoppedBefore = stop.stop_requested();
    const FileDescriptor stopRequested(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!stopRequested.isOpen()) return std::unexpected(std::error_code(errno, std::system_category()));

    QList<QByteArray> encoded;
    for (const QString& argument : arguments) encoded.append(QFile::encodeName(argument));
    std::expected<ChildProcess, std::error_code> child =
        ChildProcess::start(QFile::encodeName(tool.toLocalFile()), encoded);
    if (!child) return std::unexpected(child.error());

    const auto wake = [&stopRequested] {
        const std::uint64_t once = 1;
        (void)!write(stopRequested.number(), &once, sizeof(once));
    };
    std::optional<std::stop_callback<decltype(wake)>> onStop;
    if (!stoppedBefore) onStop.emplace(stop, wake);
    return Supervisor(*child, stopRequested, onLine, grace).untilEnd();
}

}  // namespace velmora::Tools
