#pragma once

#include "Preparation/Media.h"
#include "Preparation/Plan.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <functional>
#include <optional>
#include <stop_token>

namespace velmora {

/// Turns a movie into a file that a television can stream, or finds that it can play as it is. Keeps nothing
/// in memory between calls.
class Preparer {
  public:
    struct Update {
        std::optional<double> progress;  ///< 0…1; absent when unknown
        QString stage;
        std::optional<double> eta;  ///< seconds
    };
    struct Result {
        QUrl file;                   ///< the movie itself, or the prepared file
        QString note;                ///< one line about what was done
        QStringList subtitleTitles;  ///< empty when the movie plays as it is
    };
    using UpdateCallback = std::function<void(const Update&)>;

    /// Blocks; any thread but the main one. `onUpdate` is called from this thread and others, in order.
    /// A stop request ends ffmpeg, removes the partial file and yields `cancelled`.
    [[nodiscard]] std::expected<Result, PrepareError> prepare(const QUrl& source, bool forceTranscode,
                                                              const UpdateCallback& onUpdate,
                                                              const std::stop_token& stop = {}) const;

    /// The prepared file on disk: where it lies, what it was made from, and whether there is room for it.
    struct Output {
        /// Beside the movie where its folder is writable, else in the user's videos folder. Never a file that
        /// is the movie itself or that no preparation has made.
        [[nodiscard]] static QUrl location(const QUrl& movie);

        /// The hidden file that is locked while a prepared file of `movie`, under whatever name, is written.
        [[nodiscard]] static QUrl lockFile(const QUrl& movie);

        /// What the prepared file is made from and how, as text: equal texts, equal files.
        [[nodiscard]] static QString fingerprint(const QUrl& source, const QList<Sidecar>& sidecars,
                                                 const Plan& plan);
        [[nodiscard]] static bool isFresh(const QUrl& prepared, const QString& fingerprint);
        [[nodiscard]] static std::expected<void, PrepareError> ensureSpace(const QUrl& prepared,
                                                                           qint64 sourceSize);

        /// Writes and removes the hidden file with the fingerprint. A failure only costs a later preparation.
        static void remember(const QString& fingerprint, const QUrl& prepared);
        static void forget(const QUrl& prepared);
    };
};

}  // namespace velmora
