#include "Terminal/PrepareRun.h"

#include "Playback/MovieResolver.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"

#include <QDir>
#include <QFile>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// False when nobody takes it: a full disk, or a reader that has gone.
bool writeResult(const QUrl& file) {
    QFile output;
    return output.open(1, QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           output.write(QFile::encodeName(file.toLocalFile()) + '\n') > 0;
}

}  // namespace

PrepareRun::PrepareRun(const CommandLine& line, Terminal& terminal) : line_(line), terminal_(terminal) {
    connect(&job_, &PreparationJob::updated, this, [this](const auto& update) {
        if (report_) report_->show(update);
    });
    connect(&job_, &PreparationJob::finished, this, &PrepareRun::take);
}

void PrepareRun::start() {
    prepareNext();
}

void PrepareRun::interrupt() {
    interrupted_ = true;
    job_.cancel();
}

void PrepareRun::redraw() {
    if (report_) report_->redraw();
}

void PrepareRun::prepareNext() {
    while (!line_.movies.isEmpty() && !interrupted_) {
        const QString path = line_.movies.takeFirst();
        const auto movie = resolveMovie(QUrl::fromLocalFile(path));
        if (movie) {
            report_.emplace(terminal_, *movie);
            job_.start(*movie, line_.reEncode);
            return;
        }
        terminal_.print(u"No movie found at %1."_s.arg(path));
        status_ = failedStatus;
    }
    Q_EMIT finished(interrupted_ ? interruptedStatus : status_);
}

void PrepareRun::take() {
    const PreparationJob::Outcome& outcome = job_.outcome();
    report_->finish(outcome);
    report_.reset();
    if (!outcome) {
        status_ = failedStatus;
    } else if (!writeResult(outcome->result.file)) {
        terminal_.print(u"The result cannot be written to standard output."_s);
        status_ = failedStatus;
    }
    prepareNext();
}

}  // namespace velmora
