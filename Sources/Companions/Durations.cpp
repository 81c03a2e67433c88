#include "Companions/Durations.h"

#include <QCoreApplication>

#include <cmath>

namespace velmora::Durations {

using namespace Qt::StringLiterals;

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("Durations", text);
}

qint64 whole(double seconds) {
    return std::isfinite(seconds) && seconds > 0 ? static_cast<qint64>(seconds) : 0;
}

}  // namespace

QString clockTime(double seconds) {
    const qint64 all = whole(seconds);
    const qint64 hours = all / 3600;
    const QString minutesAndSeconds =
        u"%1:%2"_s.arg(all / 60 % 60, hours > 0 ? 2 : 1, 10, QChar(u'0')).arg(all % 60, 2, 10, QChar(u'0'));
    return hours > 0 ? u"%1:%2"_s.arg(hours).arg(minutesAndSeconds) : minutesAndSeconds;
}

QString remaining(double seconds) {
    return u"−"_s + clockTime(seconds);
}

QString timeLeft(double seconds) {
    if (!std::isfinite(seconds)) return {};
    if (seconds < 60) return tr("Less than a minute left");
    const auto minutes = static_cast<qint64>(std::round(seconds / 60));
    if (minutes < 60) return tr("%1 min left").arg(minutes);
    return tr("%1 h %2 min left").arg(minutes / 60).arg(minutes % 60);
}

QString spoken(double seconds) {
    const qint64 all = whole(seconds);
    const auto inWords = [](qint64 count, const char* one, const char* many) {
        return tr(count == 1 ? one : many).arg(count);
    };
    if (all < 60) return inWords(all, "%1 second", "%1 seconds");
    const qint64 minutes = all / 60;
    if (minutes < 60) return inWords(minutes, "%1 minute", "%1 minutes");
    const QString hours = inWords(minutes / 60, "%1 hour", "%1 hours");
    return minutes % 60 == 0 ? hours : tr("%1 %2").arg(hours).arg(minutes % 60);
}

}  // namespace velmora::Durations
