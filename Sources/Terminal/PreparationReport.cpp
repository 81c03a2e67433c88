#include "Terminal/PreparationReport.h"

#include "Companions/Title.h"
#include "Terminal/Terminal.h"

namespace velmora {

using namespace Qt::StringLiterals;

PreparationReport::PreparationReport(Terminal& terminal, const QUrl& movie)
    : terminal_(terminal), movie_(movie) {
    terminal_.print(Title::pretty(movie));
}

void PreparationReport::show(const Preparer::Update& update) {
    shown_ = update;
    redraw();
    if (terminal_.isInteractive()) return;
    if (const auto line = plain_.line(update)) terminal_.print(*line);
}

void PreparationReport::redraw() {
    if (shown_) terminal_.showLine(ProgressLine::preparing(*shown_, terminal_.look()));
}

void PreparationReport::succeed(const QString& note) {
    stop();
    terminal_.print(note);
}

void PreparationReport::fail(const QString& reason) {
    stop();
    terminal_.print(u"%1: %2"_s.arg(movie_.fileName(), reason));
}

void PreparationReport::stop() {
    shown_.reset();
    terminal_.clearLine();
}

}  // namespace velmora
