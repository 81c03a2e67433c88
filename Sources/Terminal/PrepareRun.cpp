#include "Terminal/PrepareRun.h"

#include "Diagnostics/Log.h"
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

PrepareRun::PrepareRun(const CommandLine& line, Terminal& terminal) : line_(line), terminal_(terminal) {}

void PrepareRun::start() {
    prepareNext();
}

void PrepareRun::interrupt() {
    job_ = {};
    if (report_) report_->stop();
    report_.reset();
    Q_EMIT finished(interruptedStatus);
}

void PrepareRun::redraw() {
    if (report_) report_->redraw();
}

void PrepareRun::prepareNext() {
    while (!line_.movies.isEmpty()) {
        const QString path = line_.movies.takeFirst();
        const auto movie = resolveMovie(QUrl::fromLocalFile(path));
        if (movie) {
            report_.emplace(terminal_, *movie);
            const auto updated = [this](const auto& update) { report_->show(update); };
            const auto finished = [this](const auto& outcome) { take(outcome); };
            job_ = preparer_.prepare(*movie, line_.reEncode, updated, finished);
            return;
        }
        terminal_.print(u"No movie found at %1."_s.arg(path));
        status_ = failedStatus;
    }
    Q_EMIT finished(status_);
}

void PrepareRun::take(const MoviePreparer::Outcome& outcome) {
    if (!deliver(outcome)) status_ = failedStatus;
    report_.reset();
    prepareNext();
}

bool PrepareRun::deliver(const MoviePreparer::Outcome& outcome) {
    if (!outcome) {
        const QString reason = outcome.error().errorDescription();
        logger().error(u"prepare failed: "_s + reason);
        report_->fail(reason);
        return false;
    }
    logger().notice(u"prepared %1: %2"_s.arg(outcome->file.toLocalFile(), outcome->note));
    report_->succeed(outcome->note);
    if (writeResult(outcome->file)) return true;
    terminal_.print(u"The result cannot be written to standard output."_s);
    return false;
}

}  // namespace velmora
