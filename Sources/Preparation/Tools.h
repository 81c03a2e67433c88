#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <functional>
#include <optional>
#include <stop_token>
#include <system_error>

/// Where `ffmpeg` and `ffprobe` are, and how one of them is run. Any thread.
namespace velmora::Tools {

/// The executable `name`: beside the running program, in the package managers' folders, on PATH, in that
/// order.
[[nodiscard]] std::optional<QUrl> find(const QString& name);

/// Looked up once per process; a tool installed later is seen by the next start.
[[nodiscard]] const std::optional<QUrl>& ffmpeg();
[[nodiscard]] const std::optional<QUrl>& ffprobe();

/// Whether `ffmpeg` is the copy shipped with the application.
[[nodiscard]] bool isBundled();

/// What one run of a tool left.
struct Output {
    int status = 0;  ///< exit status; 128 + the signal's number for a child that a signal ended
    QByteArray standardOutput;
    QByteArray standardError;

    /// `standardError` as text; bytes that are not UTF-8 become U+FFFD.
    [[nodiscard]] QString stderrText() const;
};

/// Called for each line of standard output as it arrives, from another thread than the caller's of `run`, or
/// from the caller's; never from two at once, and never after `run` has returned.
using LineCallback = std::function<void(const QString& line)>;

/// Runs `tool` without a shell, standard input on the null device, and blocks until it has ended and all its
/// output is read. A stop request asks the child to terminate, and kills it when it does not go within a few
/// seconds; the output is returned all the same. The child does not outlive this process.
/// Fails only when the child cannot be started.
[[nodiscard]] std::expected<Output, std::error_code> run(const QUrl& tool, const QStringList& arguments,
                                                         const std::stop_token& stop = {},
                                                         const LineCallback& onLine = {});

}  // namespace velmora::Tools
