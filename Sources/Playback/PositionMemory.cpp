#include "Playback/PositionMemory.h"

#include "System/Preferences.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

// Seconds. Whoever stops in the closing credits has seen the movie; whoever stops at once has not begun it.
constexpr double closingCredits = 60;
constexpr double openingSeconds = 10;

QString standardizedPath(const QUrl& movie) {
    return QDir::cleanPath(QFileInfo(movie.toLocalFile()).absoluteFilePath());
}

QString positionKey(const QUrl& movie) {
    return u"position:"_s + standardizedPath(movie);
}

QString durationKey(const QUrl& movie) {
    return u"duration:"_s + standardizedPath(movie);
}

QString finishedKey(const QUrl& movie) {
    return u"finished:"_s + standardizedPath(movie);
}

std::optional<double> numberAbove(double limit, const std::optional<QVariant>& value) {
    if (!value) return std::nullopt;
    const double number = value->toDouble();
    return number > limit ? std::optional(number) : std::nullopt;
}

}  // namespace

void PositionMemory::remember(const QUrl& movie, double position, double duration) {
    if (!std::isfinite(position)) return;
    const bool isLengthKnown = std::isfinite(duration) && duration > 0;
    if (isLengthKnown) preferences_.set(durationKey(movie), duration);
    if (isLengthKnown && duration - position < closingCredits) {
        preferences_.remove(positionKey(movie));
        preferences_.set(finishedKey(movie), true);
    } else if (position > openingSeconds) {
        preferences_.set(positionKey(movie), position);
        preferences_.remove(finishedKey(movie));
    }
}

std::optional<double> PositionMemory::savedPosition(const QUrl& movie) const {
    return numberAbove(openingSeconds, preferences_.value(positionKey(movie)));
}

std::optional<double> PositionMemory::savedDuration(const QUrl& movie) const {
    return numberAbove(0, preferences_.value(durationKey(movie)));
}

void PositionMemory::forget(const QUrl& movie) {
    preferences_.remove(positionKey(movie));
    preferences_.remove(finishedKey(movie));
}

}  // namespace velmora
