#include "Terminal/ProgressLine.h"

#include "Companions/Durations.h"
#include "Terminal/TerminalText.h"

#include <QStringList>

#include <algorithm>

namespace velmora::ProgressLine {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestBar = 30;
constexpr int shortestBar = 10;
constexpr int shortestStage = 12;  // columns; less of it says nothing
const QString gap = u"  "_s;

QString bar(double progress, int width, bool drawsBlocks) {
    const int filled = static_cast<int>(progress * width);
    const QChar full = drawsBlocks ? u'█' : u'#';
    const QChar empty = drawsBlocks ? u'░' : u'-';
    return QString(filled, full) + QString(width - filled, empty);
}

/// Adds `part` to `line` if both fit.
void addIfRoom(QString& line, const QString& part, int width) {
    if (part.isEmpty() || TerminalText::columns(line + gap + part) > width) return;
    line += gap + part;
}

QString phaseName(RemotePlayback::Phase phase) {
    switch (phase) {
        case RemotePlayback::Phase::idle:
        case RemotePlayback::Phase::connecting:
        case RemotePlayback::Phase::needsPin:
        case RemotePlayback::Phase::needsPassword:
            return u"Connecting to"_s;
        case RemotePlayback::Phase::waking:
            return u"Waking"_s;
        case RemotePlayback::Phase::loading:
            return u"Starting on"_s;
        case RemotePlayback::Phase::playing:
            return u"Playing on"_s;
        case RemotePlayback::Phase::paused:
            return u"Paused on"_s;
        default:
            return u"Stopped on"_s;
    }
}

}  // namespace

QString preparing(const Preparer::Update& update, Look look) {
    const QString stage = TerminalText::printable(update.stage);
    if (!update.progress) return TerminalText::fit(stage, look.columns);
    const double progress = std::clamp(*update.progress, 0.0, 1.0);
    // The number and the time left matter most; bar and stage share what is left of the line.
    QString line = u"%1 %"_s.arg(static_cast<int>(progress * 100), 3);
    const QString left = update.eta ? Durations::timeLeft(*update.eta) : QString();
    const int reserved = left.isEmpty() ? 0 : TerminalText::columns(gap + left);
    const int room = look.columns - reserved;
    const int barWidth = std::min(longestBar, room - TerminalText::columns(line + gap));
    const int barBesideStage = std::max(shortestBar, std::min(barWidth, look.columns / 4));
    if (barWidth >= shortestBar) addIfRoom(line, bar(progress, barBesideStage, look.drawsBlocks), room);
    const int stageRoom = room - TerminalText::columns(line + gap);
    if (stageRoom >= shortestStage) addIfRoom(line, TerminalText::fit(stage, stageRoom), room);
    addIfRoom(line, left, look.columns);
    return TerminalText::fit(line, look.columns);
}

QString playing(const RemotePlayback::State& state, const QString& television, Look look) {
    QString times = Durations::clockTime(state.position);
    if (state.duration > 0) times += u" / "_s + Durations::clockTime(state.duration);
    const QString where = phaseName(state.phase) + u' ' + TerminalText::printable(television);
    const bool isMoving =
        state.phase == RemotePlayback::Phase::playing || state.phase == RemotePlayback::Phase::paused;
    if (!isMoving) return TerminalText::fit(where + u'…', look.columns);
    const int nameRoom = look.columns - TerminalText::columns(times + gap);
    QString line = TerminalText::fit(times, look.columns);
    if (nameRoom >= shortestStage) addIfRoom(line, TerminalText::fit(where, nameRoom), look.columns);
    addIfRoom(line, u"(space, arrows, q)"_s, look.columns);
    return line;
}

std::optional<QString> Plain::line(const Preparer::Update& update) {
    const int tenths = update.progress ? static_cast<int>(std::clamp(*update.progress, 0.0, 1.0) * 10) : 0;
    const bool isNewStage = update.stage != stage_;
    if (!isNewStage && tenths <= tenths_) return std::nullopt;
    stage_ = update.stage;
    tenths_ = tenths;
    QString line = TerminalText::printable(update.stage);
    if (tenths > 0) line += u": %1 %"_s.arg(tenths * 10);
    if (tenths > 0 && update.eta) line += u", "_s + Durations::timeLeft(*update.eta);
    return line;
}

}  // namespace velmora::ProgressLine
