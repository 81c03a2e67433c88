#pragma once

#include <QString>

/// How the session's log lines put values.
namespace velmora::SessionText {

[[nodiscard]] inline QString truth(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

/// Truncated.
[[nodiscard]] inline QString wholeSeconds(double seconds) {
    return QString::number(static_cast<qint64>(seconds));
}

}  // namespace velmora::SessionText
