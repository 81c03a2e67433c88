#include "Terminal/PreparationReport.h"

#include "Companions/Title.h"
#include "Diagnostics/Log.h"
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

void PreparationReport::finish(const PreparationJob::Outcome& outcome) {
    shown_.reset();
    terminal_.clearLine();
    if (outcome) {
        const Preparer::Result& result = outcome->result;
        logger().notice(u"prepared %1: %2"_s.arg(result.file.toLocalFile(), result.note));
        terminal_.print(result.note);
    } else if (outcome.error().which != PrepareError::Case::cancelled) {
        const QString reason = outcome.error().errorDescription();
        logger().error(u"prepare failed: "_s + reason);
        terminal_.print(u"%1: %2"_s.arg(movie_.fileName(), reason));
    }
}

}  // namespace velmora
