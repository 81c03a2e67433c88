#include "Preparation/Conversion.h"

#include "Diagnostics/Log.h"
#include "Preparation/ProgressReader.h"

#include <QStringList>

#include <algorithm>
#include <chrono>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

/// How much of what ffmpeg said the user gets to read.
constexpr qsizetype quotedLines = 4;

QString lastLines(const QString& said) {
    const QStringList lines = said.split(u'\n', Qt::SkipEmptyParts);
    return lines.mid(std::max<qsizetype>(0, lines.size() - quotedLines)).join(u'\n');
}

}  // namespace

Conversion::Conversion(Job job, const PartialFile& partial, const Preparer::UpdateCallback& onUpdate,
                       std::stop_token stop)
    : job_(std::move(job)), partial_(partial), onUpdate_(onUpdate), stop_(std::move(stop)) {}

std::expected<void, PrepareError> Conversion::run() const {
    // A tool started after the request would run to its end.
    if (stop_.stop_requested()) return std::unexpected(PrepareError{PrepareError::Case::cancelled});
    const Attempt first = attempt(false);
    if (!lackedIndexRoom(first)) return outcome(first);
    logger().notice(
        u"moov reserve of %1 bytes was too small; retrying with faststart"_s.arg(job_.plan.moovReserve));
    partial_.remove();
    return outcome(attempt(true));
}

Conversion::Attempt Conversion::attempt(bool faststart) const {
    const QStringList arguments = job_.plan.ffmpegArguments(job_.source, partial_.url(), faststart);
    logger().notice("ffmpeg "_L1 + arguments.join(u' '));
    const ProgressReader reader{job_.duration, job_.stage, faststart};
    const auto start = std::chrono::steady_clock::now();
    const auto onLine = [&](const QString& line) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (const auto update = reader.read(line, elapsed.count())) onUpdate_(*update);
    };
    return Tools::run(job_.ffmpeg, arguments, stop_, onLine);
}

/// ffmpeg 5 ends with status 0 although it could not write the index (or wrote it over the first pictures),
/// or could not read the movie to its end; only its words tell.
bool Conversion::hasFailed(const Tools::Output& output) const {
    const QStringList signs{u"reserved_moov_size is too small"_s, u"Error writing trailer of"_s,
                            u"Error closing file"_s, job_.source.toLocalFile() + ": Input/output error"_L1};
    const QString said = output.stderrText();
    return output.status != 0 || std::any_of(signs.begin(), signs.end(),
                                             [&said](const QString& sign) { return said.contains(sign); });
}

bool Conversion::lackedIndexRoom(const Attempt& attempt) const {
    return !stop_.stop_requested() && attempt && hasFailed(*attempt) &&
           attempt->stderrText().contains("moov"_L1, Qt::CaseInsensitive);
}

std::expected<void, PrepareError> Conversion::outcome(const Attempt& attempt) const {
    if (stop_.stop_requested()) return std::unexpected(PrepareError{PrepareError::Case::cancelled});
    if (!attempt) return std::unexpected(PrepareError::system(attempt.error()));
    if (!hasFailed(*attempt)) return {};
    return std::unexpected(PrepareError{PrepareError::Case::ffmpegFailed, lastLines(attempt->stderrText())});
}

}  // namespace velmora
