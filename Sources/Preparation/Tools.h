#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
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

/// Called on the thread that called `run`, for each line of standard output as it arrives and once more for a
/// last line that nothing ended. Only a line feed ends a line and is not part of it; a carriage return is.
using LineCallback = std::function<void(const QString& line)>;

/// How long a child that was asked to end may take before it is killed. ffmpeg needs well under a second,
/// unless it is rewriting a long file that nobody wants any more by then.
inline constexpr std::chrono::milliseconds terminateGrace{3000};

/// Runs `tool` without a shell, standard input on the null device, and blocks until it has ended and its
/// output is read. A stop request asks the child to terminate, and kills it when it has not gone after
/// `grace`; its output is returned all the same. A request made before the call does nothing, so callers look
/// at `stop` themselves before they start something long. The child does not outlive this process. Fails only
/// when the child cannot be started.
[[nodiscard]] std::expected<Output, std::error_code> run(const QUrl& tool, const QStringList& arguments,
                                                         const std::stop_token& stop = {},
                                                         const LineCallback& onLine = {},
                                                         std::chrono::milliseconds grace = terminateGrace);

}  // namespace velmora::Tools
