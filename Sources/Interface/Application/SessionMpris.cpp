#include "Interface/Application/SessionMpris.h"

#include "Artwork/Poster.h"
#include "Playback/Session.h"

#include <QFileInfo>

namespace velmora {

namespace {

MprisPlayer::Controls controls(Session& session, const SessionMpris::Window& window) {
    return {.raise = window.raise,
            .close = window.close,
            .play = [&session] { session.playAction(); },
            .pause = [&session] { session.togglePlayPause(); },
            .playPause = [&session] { session.playAction(); },
            .stop =
                [&session] {
                    if (session.phase().ready()) session.cancel();
                },
            .seek = [&session](double position) { session.seek(position); },
            .open = window.open};
}

QUrl poster(const QUrl& movie) {
    const QUrl file = Poster::url(movie);
    return QFileInfo::exists(file.toLocalFile()) ? file : QUrl();
}

}  // namespace

SessionMpris::SessionMpris(Session& session, const Window& window, QObject* parent)
    : QObject(parent), session_(session), player_(controls(session, window)) {
    for (const auto signal : {&Session::phaseChanged, &Session::lastMovieChanged, &Session::routeChanged,
                              &Session::playingChanged, &Session::artworkChanged})
        connect(&session, signal, this, &SessionMpris::follow);
    connect(&session.airPlay(), &AirPlay::deviceNameChanged, this, &SessionMpris::follow);
    connect(&session, &Session::timelineChanged, this, &SessionMpris::followTime);
    follow();
}

void SessionMpris::follow() {
    const auto* playback = session_.phase().ready();
    const auto source = playback ? std::optional(playback->source) : std::nullopt;
    if (source && source != source_) ++trackNumber_;
    source_ = source;
    art_ = source ? poster(*source) : QUrl();
    duration_ = session_.duration();
    player_.show(state());
}

/// Comes twice a second, mostly with nothing but the time.
void SessionMpris::followTime() {
    if (session_.duration() != duration_) follow();
    player_.showPosition(session_.currentTime());
}

MprisState SessionMpris::state() const {
    MprisState state{.canPlay = session_.canPlayAction(),
                     .canPause = session_.canControlPlayback(),
                     .canSeek = session_.canControlPlayback()};
    if (!source_) return state;
    state.status = session_.isPlaying() ? MprisState::Status::playing : MprisState::Status::paused;
    state.track = MprisState::Track{.number = trackNumber_,
                                    .title = session_.title(),
                                    .movie = *source_,
                                    .duration = duration_ > 0 ? std::optional(duration_) : std::nullopt,
                                    .art = art_};
    return state;
}

}  // namespace velmora
