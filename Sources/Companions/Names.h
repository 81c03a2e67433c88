#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// What file names are made of. Names reach us composed (NFC) from most programs and decomposed (NFD) from
/// others, so whatever is compared here is composed first, and a character is what a reader takes for one.
/// Stateless; any thread; nothing fails.
namespace velmora::Names {

/// The last component of a local file's path.
[[nodiscard]] QString fileName(const QUrl& file);

/// `name` without its last extension.
[[nodiscard]] QString stem(const QString& name);

/// The last extension of `name` in lower case, without its full stop; empty when there is none.
[[nodiscard]] QString extension(const QString& name);

/// `text` in lower case, cut at full stops, hyphens, underscores, blanks, brackets and parentheses.
[[nodiscard]] QStringList pieces(const QString& text);

/// Whether `name` begins with all characters of `prefix`, whatever their letter case.
[[nodiscard]] bool beginsWith(const QString& name, const QString& prefix);

/// `name`, composed, without its first `count` characters.
[[nodiscard]] QString dropFirst(const QString& name, qsizetype count);

/// The first `count` characters of `text`.
[[nodiscard]] QString first(const QString& text, qsizetype count);

/// How many characters a reader counts in `text`.
[[nodiscard]] qsizetype characterCount(const QString& text);

/// `text` without spaces (of any width) and tabs at its ends; line breaks stay.
[[nodiscard]] QString trimBlanks(const QString& text);

}  // namespace velmora::Names
