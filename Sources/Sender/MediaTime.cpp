#include "Sender/MediaTime.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace velmora::MediaTime {

namespace {

constexpr double longestMovie = 1'000'000;  // seconds; anything beyond is not a time
constexpr qlonglong isValid = 1;
constexpr qlonglong isInfiniteOrUnknown = 4 | 8 | 16;

std::optional<double> plausible(double seconds) {
    if (!std::isfinite(seconds) || std::abs(seconds) > longestMovie) return std::nullopt;
    return seconds;
}

}  // namespace

std::optional<double> fromPlist(const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantMap) {
        const QVariantMap time = value.toMap();
        const double scale = time.value(u"timescale"_s).toDouble();
        const qlonglong flags = time.value(u"flags"_s).toLongLong();
        const bool isNumeric = (flags & isValid) != 0 && (flags & isInfiniteOrUnknown) == 0 && scale > 0;
        return isNumeric ? plausible(time.value(u"value"_s).toDouble() / scale) : std::nullopt;
    }
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    return isNumber ? plausible(seconds) : std::nullopt;
}

QVariantMap toFraction(double seconds) {
    constexpr int timescale = 1000;
    return {{u"value"_s, qlonglong(std::llround(seconds * timescale))},
            {u"timescale"_s, timescale},
            {u"flags"_s, int(isValid)},
            {u"epoch"_s, 0}};
}

}  // namespace velmora::MediaTime
