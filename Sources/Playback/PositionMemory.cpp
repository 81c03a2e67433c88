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

constexpr QLatin1StringView lastMovieKey("lastMovie");
constexpr QLatin1StringView migratedKey("migratedFromOrvane");

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

bool isTakenOver(const QString& key) {
    return key == lastMovieKey || key.startsWith(u"position:"_s) || key.startsWith(u"duration:"_s) ||
           key.startsWith(u"finished:"_s);
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

void PositionMemory::noteOpened(const QUrl& movie) {
    preferences_.set(lastMovieKey, standardizedPath(movie));
}

std::optional<PositionMemory::LastMovie> PositionMemory::lastMovie() const {
    const QString path = preferences_.value(lastMovieKey).value_or(QVariant()).toString();
    if (path.isEmpty() || !QFileInfo::exists(path)) return std::nullopt;
    const QUrl movie = QUrl::fromLocalFile(path);
    return LastMovie{movie, savedPosition(movie), savedDuration(movie)};
}

void PositionMemory::migrate(const Preferences& earlier) {
    if (preferences_.value(migratedKey).value_or(QVariant()).toBool()) return;
    for (const QString& key : earlier.keys()) {
        if (!isTakenOver(key) || preferences_.value(key)) continue;
        if (const auto value = earlier.value(key)) preferences_.set(key, *value);
    }
    preferences_.set(migratedKey, true);
}

void PositionMemory::forget(const QUrl& movie) {
    preferences_.remove(positionKey(movie));
    preferences_.remove(finishedKey(movie));
}

}  // namespace velmora
