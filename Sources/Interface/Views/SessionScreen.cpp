#include "Interface/Views/SessionScreen.h"

#include "Artwork/Thumbnails.h"
#include "Companions/Title.h"
#include "Playback/Session.h"

#include <algorithm>

namespace velmora {

namespace {

MovieState::Timeline timelineOf(const Session& session) {
    if (const auto saved = session.savedTimeline()) return {saved->position, saved->duration};
    return session.phase().ready() ? MovieState::Timeline{session.currentTime(), 0} : MovieState::Timeline();
}

QList<MovieTracks::Track> named(const QList<MediaOption>& options, const Tracks::Names& names) {
    QList<MovieTracks::Track> tracks;
    for (const MediaOption& option : options)
        tracks.append({option.identifier, names.value(option.identifier, option.displayName)});
    return tracks;
}

std::optional<QString> identifierOf(const std::optional<MediaOption>& option) {
    return option ? std::optional(option->identifier) : std::nullopt;
}

}  // namespace

SessionScreen::SessionScreen(Session& session, Desktop& desktop, MovieScreenModel& movie,
                             RoutePickerModel& picker, QObject* parent)
    : QObject(parent), session_(session), desktop_(desktop), movie_(movie), picker_(picker) {
    session_.airPlay().bind(picker_.anchor());
    session_.airPlay().setPickerAnchor(&picker_.anchor());
    follow();
    obey();
    showState();
    showArtwork();
    showTracks();
}

void SessionScreen::follow() {
    for (const auto signal : {&Session::phaseChanged, &Session::lastMovieChanged, &Session::routeChanged,
                              &Session::playingChanged, &Session::timelineChanged})
        connect(&session_, signal, this, &SessionScreen::showState);
    connect(&session_, &Session::artworkChanged, this, &SessionScreen::showArtwork);
    connect(&session_, &Session::tracksChanged, this, &SessionScreen::showTracks);
    connect(&session_.airPlay(), &AirPlay::deviceNameChanged, &picker_, &RoutePickerModel::refresh);
    connect(&session_.airPlay(), &AirPlay::deviceNameChanged, this, &SessionScreen::showState);
    connect(&picker_, &RoutePickerModel::wakingChanged, this, &SessionScreen::showState);
    connect(&picker_, &RoutePickerModel::noticeChanged, this, &SessionScreen::showState);
    connect(&picker_, &RoutePickerModel::answered, this, &SessionScreen::goOnAnswered);
}

void SessionScreen::obey() {
    connect(&movie_, &MovieScreenModel::playRequested, &session_, &Session::playAction);
    connect(&movie_, &MovieScreenModel::togglePlayPauseRequested, &session_, &Session::togglePlayPause);
    connect(&movie_, &MovieScreenModel::seekRequested, &session_, &Session::seek);
    connect(&movie_, &MovieScreenModel::cancelRequested, &session_, &Session::cancel);
    connect(&movie_, &MovieScreenModel::chooseRequested, this, &SessionScreen::chooseMovie);
    connect(&movie_, &MovieScreenModel::transcodeRequested, this, &SessionScreen::transcode);
    connect(&movie_, &MovieScreenModel::openRequested, &session_,
            [this](const QUrl& location) { session_.open(location, false); });
    connect(&movie_, &MovieScreenModel::previewKept, &session_, [this](const QImage& picture) {
        if (session_.canControlPlayback()) session_.setScrubPreview(picture);
    });
    connect(&movie_, &MovieScreenModel::pickRouteRequested, &picker_,
            [this] { session_.airPlay().presentPicker(&picker_.anchor()); });
    connect(&movie_, &MovieScreenModel::audioChosen, this,
            [this](const QString& identifier) { choose(identifier, true); });
    connect(&movie_, &MovieScreenModel::subtitleChosen, this,
            [this](const QString& identifier) { choose(identifier, false); });
}

/// The television asked after the session had given it up.
void SessionScreen::goOnAnswered() {
    if (session_.isStalled() && !session_.isPlaying()) session_.retryHandover();
}

void SessionScreen::showState() {
    // It was about the movie before.
    if (!session_.phase().ready()) picker_.forgetNotice();
    const auto& last = session_.lastMovie();
    movie_.show(MovieState{.phase = session_.phase(),
                           .title = session_.title(),
                           .lastMovieTitle = last ? std::optional(Title::pretty(last->source)) : std::nullopt,
                           .timeline = timelineOf(session_),
                           .deviceName = session_.airPlay().deviceName(),
                           .handingOverTo = session_.handingOverTo(),
                           .isWaking = picker_.isWaking(),
                           .notice = picker_.notice(),
                           .hasOutputContext = session_.airPlay().context() != nullptr,
                           .isOnAppleTV = session_.isOnAppleTV(),
                           .isPlaying = session_.isPlaying(),
                           .canPlayAction = session_.canPlayAction(),
                           .canControlPlayback = session_.canControlPlayback(),
                           .showsLiveFrame = session_.showsLiveFrame(),
                           .toolsMissing = session_.phase().isIdle() && !last && Session::toolsMissing()});
}

void SessionScreen::showArtwork() {
    MovieArtwork artwork{
        .poster = session_.poster(), .scrubPreview = session_.scrubPreview(), .thumbnailAt = {}};
    if (const auto thumbnails = session_.thumbnails())
        artwork.thumbnailAt = [thumbnails](double seconds) { return thumbnails->image(seconds); };
    movie_.show(artwork);
}

void SessionScreen::showTracks() {
    const Tracks::Names& names = session_.trackNames();
    const auto& audio = session_.audioGroup();
    movie_.show(MovieTracks{.audio = audio ? named(audio->options, names) : QList<MovieTracks::Track>(),
                            .subtitles = named(Tracks::real(session_.subtitleGroup()), names),
                            .chosenAudio = identifierOf(session_.selectedAudio()),
                            .chosenSubtitle = identifierOf(session_.selectedSubtitle())});
}

void SessionScreen::chooseMovie() {
    const QPointer<SessionScreen> self(this);
    Session::pickMovie(desktop_, [self](const std::optional<QUrl>& location) {
        if (self && location) self->session_.open(*location, false);
    });
}

void SessionScreen::choose(const QString& identifier, bool isAudio) {
    const auto& group = isAudio ? session_.audioGroup() : session_.subtitleGroup();
    if (!group) return;
    const auto option = std::ranges::find(group->options, identifier, &MediaOption::identifier);
    const bool isFound = option != group->options.end();
    session_.select(isFound ? std::optional(*option) : std::nullopt, group->kind);
}

void SessionScreen::transcode() {
    const auto* failure = session_.phase().failed();
    if (!failure || !failure->source) return;
    const QUrl source = *failure->source;
    session_.open(source, true);
}

}  // namespace velmora
