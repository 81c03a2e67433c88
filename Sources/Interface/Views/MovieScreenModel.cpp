#include "Interface/Views/MovieScreenModel.h"

#include "Companions/Durations.h"
#include "Interface/Views/MovieDecisions.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora {

MovieScreenModel::MovieScreenModel(QObject* parent) : QObject(parent) {
    connect(&mediaRows_, &MenuRows::chosen, this, &MovieScreenModel::chooseTrack);
}

void MovieScreenModel::show(const MovieState& state) {
    const bool isSameTimeline = state.timeline == state_.timeline;
    const bool couldControl = state_.canControlPlayback;
    state_ = state;
    if (couldControl && !state_.canControlPlayback) {
        cancelDrag();
        unpoint();
    }
    Q_EMIT stateChanged();
    if (!isSameTimeline) Q_EMIT timelineChanged();
}

void MovieScreenModel::show(const MovieArtwork& artwork) {
    const bool isSamePoster = artwork.poster.cacheKey() == artwork_.poster.cacheKey();
    artwork_ = artwork;
    if (!isSamePoster) Q_EMIT posterChanged();
    Q_EMIT artworkChanged();
}

void MovieScreenModel::show(const MovieTracks& tracks) {
    tracks_ = tracks;
    mediaRows_.show(MovieDecisions::mediaRows(tracks));
    Q_EMIT tracksChanged();
}

MovieScreenModel::Screen MovieScreenModel::screen() const {
    switch (MovieDecisions::screen(state_)) {
        case MovieDecisions::Screen::empty:
            return Empty;
        case MovieDecisions::Screen::failed:
            return Failed;
        case MovieDecisions::Screen::movie:
            return Movie;
    }
    return Empty;
}

QString MovieScreenModel::title() const {
    return MovieDecisions::title(state_);
}

QString MovieScreenModel::status() const {
    return MovieDecisions::status(state_).text;
}

QString MovieScreenModel::statusSymbol() const {
    return MovieDecisions::status(state_).symbol;
}

MovieScreenModel::Tone MovieScreenModel::statusTone() const {
    switch (MovieDecisions::status(state_).tone) {
        case MovieDecisions::Tone::quiet:
            return Quiet;
        case MovieDecisions::Tone::plain:
            return Plain;
        case MovieDecisions::Tone::warning:
            return Warning;
    }
    return Quiet;
}

QString MovieScreenModel::playHelp() const {
    return MovieDecisions::playHelp(state_);
}

QString MovieScreenModel::playName() const {
    return MovieDecisions::withoutKey(playHelp());
}

QString MovieScreenModel::playSymbol() const {
    return MovieDecisions::playSymbol(state_);
}

bool MovieScreenModel::isPlaySolid() const {
    return MovieDecisions::isPlaySolid(state_);
}

QString MovieScreenModel::airPlayHelp() const {
    return MovieDecisions::airPlayHelp(state_);
}

bool MovieScreenModel::isAirPlayLit() const {
    return MovieDecisions::isAirPlayLit(state_);
}

QString MovieScreenModel::discSymbol() const {
    return MovieDecisions::disc(state_).symbol;
}

bool MovieScreenModel::isDiscUnderPointerOnly() const {
    return MovieDecisions::disc(state_).onlyUnderPointer;
}

bool MovieScreenModel::canPressStill() const {
    return MovieDecisions::stillAction(state_) != MovieDecisions::StillAction::none;
}

double MovieScreenModel::stillOpacity() const {
    return MovieDecisions::stillOpacity(state_);
}

double MovieScreenModel::progress() const {
    const auto* preparing = state_.phase.preparing();
    return preparing ? preparing->progress.value_or(-1) : -1;
}

QString MovieScreenModel::percentText() const {
    const auto* preparing = state_.phase.preparing();
    return preparing ? MovieDecisions::percentText(preparing->progress) : QString();
}

QString MovieScreenModel::timeLeftText() const {
    const auto* preparing = state_.phase.preparing();
    return preparing && preparing->eta ? Durations::timeLeft(*preparing->eta) : QString();
}

QString MovieScreenModel::failureMessage() const {
    const auto* failure = state_.phase.failed();
    return failure ? failure->message : QString();
}

bool MovieScreenModel::canTranscode() const {
    const auto* failure = state_.phase.failed();
    return failure && failure->canTranscode;
}

QString MovieScreenModel::elapsedText() const {
    return Durations::clockTime(position());
}

QString MovieScreenModel::remainingText() const {
    // It changes when the elapsed time does, so that the window is drawn once for both.
    return duration() > 0 ? Durations::remaining(duration() - std::floor(position())) : QString();
}

QString MovieScreenModel::widestTime() const {
    return MovieDecisions::widestTime(std::max(duration(), position()));
}

QString MovieScreenModel::spokenPosition() const {
    return MovieDecisions::spokenPosition({.position = position(), .duration = duration()});
}

QString MovieScreenModel::previewText() const {
    return Durations::clockTime(pointedTime_);
}

QImage MovieScreenModel::stillPicture() const {
    if (isDragging_ && !preview_.isNull()) return preview_;
    return artwork_.scrubPreview.isNull() ? artwork_.poster : artwork_.scrubPreview;
}

bool MovieScreenModel::canChooseTracks() const {
    return MovieDecisions::canChooseTracks(tracks_);
}

void MovieScreenModel::pressStill() {
    switch (MovieDecisions::stillAction(state_)) {
        case MovieDecisions::StillAction::none:
            return;
        case MovieDecisions::StillAction::playAction:
            Q_EMIT playRequested();
            return;
        case MovieDecisions::StillAction::togglePlayPause:
            Q_EMIT togglePlayPauseRequested();
            return;
    }
}

void MovieScreenModel::seekBy(double seconds) {
    if (canControl()) Q_EMIT seekRequested(moviePosition() + seconds);
}

bool MovieScreenModel::drop(const QList<QUrl>& locations) {
    const auto first = std::ranges::find_if(locations, &QUrl::isLocalFile);
    if (first == locations.end()) return false;
    Q_EMIT openRequested(*first);
    return true;
}

void MovieScreenModel::point(double seconds) {
    if (!canControl() || duration() <= 0) return;
    isPointing_ = true;
    showPreview(seconds);
}

void MovieScreenModel::unpoint() {
    if (isDragging_ || !std::exchange(isPointing_, false)) return;
    Q_EMIT timelineChanged();
}

void MovieScreenModel::drag(double seconds) {
    if (!canControl() || duration() <= 0) return;
    isDragging_ = true;
    isPointing_ = true;
    showPreview(seconds);
    Q_EMIT artworkChanged();
}

void MovieScreenModel::release() {
    if (!isDragging_) return;
    const double target = pointedTime_;
    if (!preview_.isNull()) Q_EMIT previewKept(preview_);
    // While the hand's place still counts, so that the knob does not jump back in between.
    Q_EMIT seekRequested(target);
    cancelDrag();
}

void MovieScreenModel::cancelDrag() {
    if (!std::exchange(isDragging_, false)) return;
    Q_EMIT timelineChanged();
    Q_EMIT artworkChanged();
}

void MovieScreenModel::showPreview(double seconds) {
    pointedTime_ = std::clamp(seconds, 0.0, duration());
    preview_ = artwork_.thumbnailAt ? artwork_.thumbnailAt(pointedTime_) : QImage();
    Q_EMIT timelineChanged();
}

void MovieScreenModel::chooseTrack(const QString& rowIdentifier) {
    const MovieDecisions::TrackChoice choice = MovieDecisions::trackOf(rowIdentifier);
    if (choice.isAudio)
        Q_EMIT audioChosen(choice.identifier.value_or(QString()));
    else
        Q_EMIT subtitleChosen(choice.identifier.value_or(QString()));
}

}  // namespace velmora
