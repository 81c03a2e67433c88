#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QUrl>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>

namespace velmora {

/// The HTTP server that receivers fetch movies from. One per process, on a thread of its own; it serves
/// exactly what is published, under unguessable names, each to one receiver's address and no other.
class MediaServer {
  public:
    /// What the receiver has asked for so far: the only honest witness of what a television does with a
    /// movie.
    struct Activity {
        qint64 requests = 0;       ///< answered with the movie or its headers
        qint64 mediaRequests = 0;  ///< of these, GETs
        qint64 bytesSent = 0;
        qint64 furthestByte = 0;     ///< the highest offset handed out
        bool readPastIndex = false;  ///< some GET reached beyond the first mebibytes that hold the index
        qint64 refused = 0;          ///< requests for this movie's path from other addresses
        std::optional<std::chrono::steady_clock::time_point> firstRequest;
        std::optional<std::chrono::steady_clock::time_point> lastRequest;
    };

    /// A published file, for as long as it lives. May outlive neither its server nor be copied.
    class Publication {
      public:
        virtual ~Publication() = default;
        /// The URL for a receiver that reaches this computer under `local` (IPv4, or IPv6 without scope).
        [[nodiscard]] virtual QUrl url(const QHostAddress& local) const = 0;
        [[nodiscard]] virtual Activity activity() const = 0;
    };

    /// Listens on every address. `port` 0: one of the documented range, the first that is free.
    [[nodiscard]] static std::expected<std::unique_ptr<MediaServer>, QString> start(quint16 port = 0);
    ~MediaServer();
    MediaServer(const MediaServer&) = delete;
    MediaServer& operator=(const MediaServer&) = delete;

    [[nodiscard]] quint16 port() const;

    /// Opens the file now; it stays readable even if it is renamed or deleted. Fails with the reason in plain
    /// words.
    [[nodiscard]] std::expected<std::unique_ptr<Publication>, QString> publish(const QString& path,
                                                                               const QHostAddress& receiver);

  private:
    class Private;
    explicit MediaServer(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d_;
};

}  // namespace velmora
