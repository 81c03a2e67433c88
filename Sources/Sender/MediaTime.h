#pragma once

#include <QVariant>

#include <optional>

/// Times within a movie, as property lists carry them: a real number of seconds, or a fraction in a
/// dictionary of value, timescale, epoch and flags.
namespace velmora::MediaTime {

/// Seconds; nothing when it is no time, not numeric, or absurd.
[[nodiscard]] std::optional<double> fromPlist(const QVariant& value);

/// The fraction, to the millisecond.
[[nodiscard]] QVariantMap toFraction(double seconds);

}  // namespace velmora::MediaTime
