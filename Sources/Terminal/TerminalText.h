#pragma once

#include <QString>

/// Text as a terminal shows it. Pure functions; any thread.
namespace velmora::TerminalText {

/// `text` without anything that a terminal would obey: control characters become U+FFFD, except line feeds.
[[nodiscard]] QString printable(const QString& text);

/// How many columns `text` takes. East Asian wide characters take two, combining ones none.
[[nodiscard]] int columns(const QString& text);

/// `text` cut to at most `width` columns, an ellipsis in the last one when something is missing.
[[nodiscard]] QString fit(const QString& text, int width);

}  // namespace velmora::TerminalText
