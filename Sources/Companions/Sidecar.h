#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace velmora {

/// A subtitle file found beside a movie. The static operations keep no state, fail never, and may run on any
/// thread; they read files, so not on the main one.
struct Sidecar {
    QUrl url;
    std::optional<QString> language;  ///< ISO 639-2/T code
    QDateTime modified;               ///< the first day of year 1 when it cannot be read
    std::optional<QString> encoding;  ///< "CP1252" when the text is not Unicode
    bool isForced = false;
    bool isSDH = false;  ///< for the deaf and hard of hearing
    qint64 score = 0;    ///< how well the name matches the movie's; higher is better

    /// The subtitle files that belong to `movie`, best match first.
    [[nodiscard]] static QList<Sidecar> find(const QUrl& movie);

    /// The words of a file's name, as `Names::pieces` cuts them.
    [[nodiscard]] static QStringList tokens(const QString& text);

    /// Whether `name`, one of the `names` in a folder, is a movie that this application prepared itself.
    [[nodiscard]] static bool isPreparedOutput(const QString& name, const QStringList& names);

    /// Lower-case extensions of subtitle files.
    [[nodiscard]] static const QStringList& extensions();
};

}  // namespace velmora
