#pragma once

#include <QHash>
#include <QImage>
#include <QString>
#include <QUrl>

#include <memory>
#include <stop_token>

namespace velmora {

/// A strip of small pictures of one movie, one every few seconds, for its timeline. The strip lies in the
/// user's cache and outlives the process; this is the handle on it.
///
/// `image` belongs to the main thread; the object may be made on any other before.
class Thumbnails {
  public:
    /// A strip that is there: `count` files in `folder`, `interval` seconds apart.
    Thumbnails(const QString& folder, double interval, int count);

    /// Makes the movie's strip anew, in one run over its key frames. Blocks for as long as that takes, up to
    /// minutes: any thread but the main one. Null when there is none, and soon after a stop request.
    [[nodiscard]] static std::shared_ptr<Thumbnails> generate(const QUrl& movie,
                                                              const std::stop_token& stop = {});

    /// The strip that an earlier run finished; null when there is none. Any thread.
    [[nodiscard]] static std::shared_ptr<Thumbnails> stored(const QUrl& movie);

    /// Where the movie's strip is kept. Makes nothing.
    [[nodiscard]] static QUrl folder(const QUrl& movie);

    /// The picture for a position in seconds, the nearest one there is; null when its file cannot be read.
    [[nodiscard]] QImage image(double time);

    [[nodiscard]] double interval() const { return interval_; }
    [[nodiscard]] int count() const { return count_; }

  private:
    QString folder_;
    double interval_;
    int count_;
    QHash<int, QImage> cache_;  ///< by number; a few hundred small pictures at most
};

}  // namespace velmora
