#include "Preparation/ProgressReader.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace velmora {
namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Preparer)
};

using namespace Qt::StringLiterals;

/// From here on a run that moves the index is rewriting the whole file.
constexpr double nearlyDone = 0.995;

/// Before this an estimate of the time left says more about ffmpeg's start than about the movie.
constexpr double tooEarlyToEstimate = 0.02;

/// The position in the movie, seconds. Both keys carry microseconds, whatever the second one's name says.
std::optional<double> position(const QString& line) {
    if (!line.startsWith("out_time_us="_L1) && !line.startsWith("out_time_ms="_L1)) return {};
    bool isNumber = false;
    const double microseconds = line.mid(line.indexOf(u'=') + 1).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(microseconds)) return {};
    return microseconds / 1e6;
}

}  // namespace

std::optional<Preparer::Update> ProgressReader::read(const QString& line, double elapsed) const {
    if (duration <= 0) return {};
    const std::optional<double> seconds = position(line);
    if (!seconds) return {};
    const double progress = std::clamp(*seconds / duration, 0.0, 1.0);
    if (movesIndexAtEnd && progress >= nearlyDone)
        return Preparer::Update{{}, Texts::tr("Finishing up…"), {}};
    std::optional<double> eta;
    if (progress > tooEarlyToEstimate) eta = elapsed / progress - elapsed;
    return Preparer::Update{progress, stage, eta};
}

}  // namespace velmora
