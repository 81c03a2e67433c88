#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Languages as the application writes them everywhere: ISO 639-2/T three-letter codes in lower case
/// ("nld", "deu"), or absent. Stateless; any thread; nothing fails.
namespace velmora::Language {

/// Any language tag (two or three letters, bibliographic code, name, locale identifier) to a code.
[[nodiscard]] std::optional<QString> normalize(const std::optional<QString>& tag);

/// The user's languages, most preferred first, without duplicates; may be empty.
[[nodiscard]] QStringList preferred();

/// The language that a subtitle file's name speaks of. Both names come without extension.
[[nodiscard]] std::optional<QString> fromFilename(const QString& name, const QString& basename);

/// The language of a subtitle's text by its commonest words, or absent when unsure.
[[nodiscard]] std::optional<QString> detect(const QString& text);

/// What the user's locale calls the language with this code ("Dutch"); absent when it has no name for it.
[[nodiscard]] std::optional<QString> displayName(const QString& code);

}  // namespace velmora::Language
