#pragma once

#include <QString>

/// Lengths of time for people to read, in the user's language. Pure functions; nonsense counts as nothing.
namespace velmora::Durations {

/// "37:12", "1:52:03".
[[nodiscard]] QString clockTime(double seconds);

/// "−57:13", what a timeline says of the time that is left.
[[nodiscard]] QString remaining(double seconds);

/// "Less than a minute left", "3 min left", "1 h 12 min left"; empty when there is no telling.
[[nodiscard]] QString timeLeft(double seconds);

/// For ears: "41 minutes", "1 hour 38", "12 seconds".
[[nodiscard]] QString spoken(double seconds);

}  // namespace velmora::Durations
