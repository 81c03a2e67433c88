#pragma once

#include "Artwork/Thumbnails.h"
#include "Playback/ScriptedPlayer.h"
#include "Playback/Session.h"
#include "Support/LoggedLines.h"
#include "Support/ScriptedSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace velmora::test {

using namespace Qt::StringLiterals;

class ScriptedDesktop : public Desktop {
  public:
    QList<QUrl> revealed;
    QList<QUrl> recent;
    std::optional<MovieDialog> dialog;
    Picked picked;

    void pickMovie(const MovieDialog& shown, Picked callback) override {
        dialog = shown;
        picked = std::move(callback);
    }
    void reveal(const QUrl& file) override { revealed.append(file); }
    void noteRecentDocument(const QUrl& file) override { recent.append(file); }
};

/// A job whose end is told by the test.
template <class... News>
struct ScriptedJob {
    QString asked;
    std::function<void(News...)> finished;
    std::weak_ptr<void> wanted;

    [[nodiscard]] bool isWanted() const { return !wanted.expired(); }
    void finish(News... news) const {
        if (isWanted()) finished(news...);
    }
    [[nodiscard]] Job start() {
        const auto job = std::make_shared<int>();
        wanted = job;
        return Job(job);
    }
};

class ScriptedPreparer : public MoviePreparer {
  public:
    QList<ScriptedJob<Outcome>> jobs;
    std::function<void(const Preparer::Update&)> update;

    [[nodiscard]] Job prepare(const QUrl& movie, bool forceTranscode,
                              std::function<void(const Preparer::Update&)> updated,
                              std::function<void(const Outcome&)> finished) override {
        update = std::move(updated);
        jobs.append({movie.fileName() + QString::fromLatin1(forceTranscode ? " forced" : ""),
                     std::move(finished),
                     {}});
        return jobs.last().start();
    }
};

class ScriptedArtwork : public ArtworkMaker {
  public:
    QMap<QUrl, QImage> posters;
    QMap<QUrl, std::shared_ptr<Thumbnails>> strips;
    QList<ScriptedJob<bool>> posterJobs;
    QList<ScriptedJob<std::shared_ptr<Thumbnails>>> stripJobs;

    [[nodiscard]] QImage poster(const QUrl& movie) const override { return posters.value(movie); }
    [[nodiscard]] Job capturePoster(const QUrl& movie, std::optional<double> time,
                                    std::function<void(const QImage&)> finished) override {
        const QString at = time ? QString::number(*time) : u"any"_s;
        const auto tell = [this, movie, finished = std::move(finished)](bool isCaptured) {
            finished(isCaptured ? posters.value(movie) : QImage());
        };
        posterJobs.append({movie.fileName() + u' ' + at, tell, {}});
        return posterJobs.last().start();
    }
    [[nodiscard]] std::shared_ptr<Thumbnails> storedThumbnails(const QUrl& movie) const override {
        return strips.value(movie);
    }
    [[nodiscard]] Job makeThumbnails(
        const QUrl& movie, std::function<void(const std::shared_ptr<Thumbnails>&)> finished) override {
        stripJobs.append({movie.fileName(), std::move(finished), {}});
        return stripJobs.last().start();
    }
};

/// One window, its movie and its television, in virtual time.
class Story {
  public:
    Story() { movie = addFile(u"Film.mkv"_s); }
    /// What the session leaves waiting goes on from the event loop, and ends there.
    ~Story() {
        session.reset();
        QCoreApplication::processEvents();
    }
    Story(const Story&) = delete;
    Story& operator=(const Story&) = delete;

    VirtualClock clock;
    MapPreferences preferences;
    MapPreferences earlier;
    ScriptedContext context;
    ScriptedPower power;
    ScriptedDesktop desktop;
    ScriptedPreparer preparer;
    ScriptedArtwork artwork;
    Stage stage{clock};
    World world{.clock = clock,
                .preferences = preferences,
                .earlierPreferences = &earlier,
                .players = stage,
                .power = power,
                .desktop = desktop,
                .preparer = preparer,
                .artwork = artwork,
                .preferredLanguages = [] { return QStringList{u"nld"_s, u"eng"_s}; }};
    QTemporaryDir folder;
    QUrl movie;
    LoggedLines log;
    std::unique_ptr<Session> session = std::make_unique<Session>(world, &context);

    QUrl addFile(const QString& name, const QByteArray& content = "film") {
        const QString path = folder.filePath(name);
        QDir().mkpath(QFileInfo(QDir::cleanPath(path)).absolutePath());
        QFile file(QDir::cleanPath(path));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return QUrl::fromLocalFile(path);
    }
    [[nodiscard]] QString key(const QString& prefix) const { return prefix + movie.toLocalFile(); }
    void savePosition(double position) {
        preferences.set(key(u"position:"_s), position);
        preferences.set(key(u"duration:"_s), 5400.0);
    }
    void run(double time) { clock.advance(seconds(time)); }

    /// The journal begins when the movie is ready, with a device chosen before unless there is no name.
    void start(const QString& deviceName) {
        if (!deviceName.isEmpty()) context.choose(deviceName);
        run(1);
        session->open(movie, false);
        (void)log.take();
        stage.begin();
        finishPreparing();
    }
    /// The movie on the television, where the journal begins anew.
    void startOnTelevision() {
        stage.takenAfter = {{2, 0.5}};
        start(u"Den"_s);
        while (session->handingOverTo()) run(0.5);
        stage.begin();
    }
    void finishPreparing() {
        const QUrl file = QUrl::fromLocalFile(folder.filePath(u"Film (Velmora).mp4"_s));
        preparer.jobs.last().finish(Preparer::Result{file, u"Repacked"_s, titles});
    }
    QStringList titles;
};

}  // namespace velmora::test
