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
        [[nodiscard]] static QUrl location(const QUrl& movie);
        [[nodiscard]] static QString fingerprint(const QUrl& source, const QList<Sidecar>& sidecars,
                                                 const Plan& plan);
        [[nodiscard]] static bool isFresh(const QUrl& prepared, const QString& fingerprint);
        [[nodiscard]] static std::expected<void, PrepareError> ensureSpace(const QUrl& prepared,
                                                                           qint64 sourceSize);
        static void remember(const QString& fingerprint, const QUrl& prepared);
    };
};

}  // namespace velmora
