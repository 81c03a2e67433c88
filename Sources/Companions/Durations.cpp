#include "Companions/Durations.h"

#include <QCoreApplication>

#include <cmath>

namespace velmora::Durations {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Durations)
};

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
    if (seconds < 60) return Texts::tr("Less than a minute left");
    const auto minutes = static_cast<qint64>(std::round(seconds / 60));
    if (minutes < 60) return Texts::tr("%1 min left").arg(minutes);
    return Texts::tr("%1 h %2 min left").arg(minutes / 60).arg(minutes % 60);
}

QString spoken(double seconds) {
    const qint64 all = whole(seconds);
    if (all == 1) return Texts::tr("1 second");
    if (all < 60) return Texts::tr("%n seconds", nullptr, static_cast<int>(all));
    const qint64 minutes = all / 60;
    if (minutes == 1) return Texts::tr("1 minute");
    if (minutes < 60) return Texts::tr("%n minutes", nullptr, static_cast<int>(minutes));
    const auto count = static_cast<int>(minutes / 60);
    const QString hours = count == 1 ? Texts::tr("1 hour") : Texts::tr("%n hours", nullptr, count);
    return minutes % 60 == 0 ? hours : Texts::tr("%1 %2").arg(hours).arg(minutes % 60);
}

}  // namespace velmora::Durations
