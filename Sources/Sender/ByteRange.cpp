#include "Sender/ByteRange.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace velmora {

namespace {

constexpr qint64 largest = std::numeric_limits<qint64>::max();

/// Digits only; a number too large to hold is the largest there is. Nothing for anything else.
std::optional<qint64> number(QByteArrayView digits) {
    if (digits.isEmpty() ||
        !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    qint64 value = 0;
    for (const char digit : digits) {
        if (value > (largest - 9) / 10) return largest;
        value = value * 10 + (digit - '0');
    }
    return value;
}

ByteRange part(qint64 offset, qint64 end) {
    return {ByteRange::Kind::part, offset, end - offset};
}

ByteRange suffix(qint64 length, qint64 size) {
    if (length == 0 || size == 0) return {ByteRange::Kind::unsatisfiable};
    return part(size - std::min(length, size), size);
}

}  // namespace

ByteRange ByteRange::parse(QByteArrayView header, qint64 size) {
    const ByteRange whole{Kind::whole, 0, size};
    constexpr QByteArrayView unit("bytes=");
    if (header.size() < unit.size() || qstrnicmp(header.data(), unit.data(), size_t(unit.size())) != 0)
        return whole;

    const QByteArrayView range = header.sliced(unit.size()).trimmed();
    const qsizetype dash = range.indexOf('-');
    if (dash < 0) return whole;
    const QByteArrayView firstText = range.first(dash);
    const QByteArrayView lastText = range.sliced(dash + 1);
    const std::optional<qint64> first = number(firstText);
    const std::optional<qint64> last = number(lastText);

    if (firstText.isEmpty()) return last ? suffix(*last, size) : whole;
    if (!first || (!last && !lastText.isEmpty()) || (last && *last < *first)) return whole;
    if (*first >= size) return {Kind::unsatisfiable};
    return part(*first, last && *last < size ? *last + 1 : size);
}

}  // namespace velmora
