// From what the user chose to a movie that is prepared, and what is remembered of it.
#include "Companions/Names.h"
#include "Companions/Sidecar.h"
#include "Diagnostics/Log.h"
#include "Playback/MovieResolver.h"
#include "Playback/Session.h"
#include "Playback/SessionText.h"
#include "Playback/SubtitleAdoption.h"
#include "System/Preferences.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Session)
};

QString folderOf(const QUrl& file) {
    return QDir::cleanPath(QFileInfo(file.toLocalFile()).absolutePath());
}

}  // namespace

void Session::open(const QUrl& location, bool forceTranscode) {
    if (Sidecar::extensions().contains(Names::extension(Names::fileName(location)))) {
        const std::optional<QUrl> offered = lastMovie_ ? std::optional(lastMovie_->source) : std::nullopt;
        if (const auto movie = currentSource() ? currentSource() : offered) {
            openWithSubtitle(location, *movie, forceTranscode);
            return;
        }
    }
    if (const auto movie = resolveMovie(location))
        openMovie(*movie, forceTranscode);
    else
        fail(Texts::tr("No movie found at %1.").arg(Names::fileName(location)));
}

void Session::openWithSubtitle(const QUrl& subtitle, const QUrl& movie, bool forceTranscode) {
    if (folderOf(subtitle) != folderOf(movie)) {
        const std::optional<QUrl> copy = adoptSubtitle(subtitle, movie);
        if (!copy) {
            fail(Texts::tr("Couldn't copy %1 next to the movie.").arg(Names::fileName(subtitle)));
            return;
        }
        logger().notice(u"subtitle added: "_s + Names::fileName(*copy));
    }
    open(movie, forceTranscode);
}

void Session::fail(const QString& message) {
    enter(Phase::Failure{.source = {}, .message = message, .canTranscode = false});
}

void Session::openMovie(const QUrl& movie, bool forceTranscode) {
    preparation_ = {};
    stopPlayback();
    setTimeline(0, 0);
    lastWasTranscode_ = forceTranscode;
    world_.desktop.noteRecentDocument(movie);
    memory_.noteOpened(movie);
    logger().notice(
        u"open %1 forceTranscode=%2"_s.arg(movie.toLocalFile(), SessionText::truth(forceTranscode)));
    showPoster(movie);
    enter(Phase::Preparation{.source = movie, .stage = Texts::tr("Looking at the file…")});
    if (poster_.isNull()) captureEarlyPoster(movie);
    prepare(movie, forceTranscode);
}

void Session::prepare(const QUrl& movie, bool forceTranscode) {
    const auto updated = [this, movie](const Preparer::Update& update) {
        if (phase_.preparing()) enter(Phase::Preparation{movie, update.progress, update.stage, update.eta});
    };
    const auto finished = [this, movie, forceTranscode](const MoviePreparer::Outcome& outcome) {
        preparation_ = {};
        prepared(movie, outcome, forceTranscode);
    };
    preparation_ = world_.preparer.prepare(movie, forceTranscode, updated, finished);
}

void Session::prepared(const QUrl& movie, const MoviePreparer::Outcome& outcome, bool forceTranscode) {
    if (!outcome) {
        if (outcome.error().which == PrepareError::Case::cancelled) return;
        const QString description = outcome.error().errorDescription();
        logger().error(u"prepare failed: "_s + description);
        enter(Phase::Failure{movie, description, !forceTranscode});
        return;
    }
    logger().notice(u"prepared %1: %2"_s.arg(outcome->file.toLocalFile(), outcome->note));
    chosenTracks_.clear();
    enter(Phase::Playback{movie, outcome->file, outcome->note, outcome->subtitleTitles});
    loadThumbnails(movie);
    startPlayback({.file = outcome->file,
                   .source = movie,
                   .time = memory_.savedPosition(movie),
                   .play = airPlay_.deviceName().has_value()});
}

void Session::chooseFile() {
    const QPointer<Session> self(this);
    pickMovie(world_.desktop, [self](const std::optional<QUrl>& location) {
        if (self && location) self->open(*location, false);
    });
}

void Session::pickMovie(Desktop& desktop, Desktop::Picked picked) {
    QStringList extensions(movieExtensions().cbegin(), movieExtensions().cend());
    extensions.sort();
    const Desktop::MovieDialog dialog{
        .title = Texts::tr("Choose a movie"),
        .message = Texts::tr("Pick a movie. Subtitles next to it come along automatically."),
        .extensions = extensions};
    desktop.pickMovie(dialog, std::move(picked));
}

void Session::cancel() {
    preparation_ = {};
    stopPlayback();
    enter(Phase());
    loadLastMovie();
    showPoster(lastMovie_ ? std::optional(lastMovie_->source) : std::nullopt);
}

void Session::revealInFinder() {
    if (const auto* playback = phase_.ready()) world_.desktop.reveal(playback->file);
}

void Session::startLastMovieOver() {
    if (!lastMovie_) return;
    const QUrl movie = lastMovie_->source;
    memory_.forget(movie);
    open(movie, false);
}

void Session::loadLastMovie() {
    lastMovie_ = memory_.lastMovie();
    Q_EMIT lastMovieChanged();
}

void Session::rememberPosition(std::optional<double> time) {
    const auto* playback = phase_.ready();
    const auto item = player_->currentItem();
    if (playback && item && time) memory_.remember(playback->source, *time, item->duration().value_or(0));
}

void Session::prepareToQuit() {
    rememberPosition(player_->currentTime());
    world_.preferences.synchronize();
}

}  // namespace velmora
