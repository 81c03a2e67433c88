#pragma once

#include "Sender/TrackOverlay.h"

#include <QHostAddress>
#include <QString>
#include <QUrl>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>

namespace velmora {

/// The HTTP server that receivers fetch movies from. One per process, on threads of its own; it serves
/// exactly what is published, under unguessable names, each to one receiver's address and no other.
///
/// Every method may be called from any thread.
class MediaServer {
  public:
    /// The ports that a firewall has to let through, first to last.
    static constexpr quint16 firstPort = 47110;
    static constexpr quint16 lastPort = 47119;

    /// What the receiver has asked for so far: the only honest witness of what a television does with a
    /// movie. Everything that was not answered with the movie or its headers is left out.
    ///
    /// Bytes are those that the receiver's system has acknowledged (Linux counts them for each connection),
    /// so what still waits in a buffer of this computer is not among them. An answer's own header counts too,
    /// a few hundred bytes, but never beyond the length that was asked for.
    struct Activity {
        qint64 requests = 0;         ///< GET and HEAD
        qint64 mediaRequests = 0;    ///< of these, GETs
        qint64 bytesSent = 0;        ///< sum over all GETs; grows while they run
        qint64 furthestByte = 0;     ///< the highest offset sent, one past it
        bool readPastIndex = false;  ///< `furthestByte` lies beyond the first 16 MiB, or at the file's end
        qint64 refused = 0;          ///< requests for this movie's path from other addresses
        std::optional<std::chrono::steady_clock::time_point> firstRequest;
        std::optional<std::chrono::steady_clock::time_point> lastRequest;
    };

    /// A published file. Destroying it ends the transfers that run and makes the URL unknown. It may outlive
    /// the server; nobody is served any more then.
    class Publication {
      public:
        virtual ~Publication() = default;
        /// The URL for a receiver that reaches this computer under `local` (IPv4, or IPv6 without scope).
        [[nodiscard]] virtual QUrl url(const QHostAddress& local) const = 0;
        [[nodiscard]] virtual Activity activity() const = 0;
        /// False for a file that is served with its own tracks for want of a way to choose others.
        [[nodiscard]] virtual bool hasChosenTracks() const { return true; }
    };

    /// Listens on every address. `port` 0: one of the documented range, the first that is free, or any when
    /// none of them is.
    [[nodiscard]] static std::expected<std::unique_ptr<MediaServer>, QString> start(quint16 port = 0);
    ~MediaServer();
    MediaServer(const MediaServer&) = delete;
    MediaServer& operator=(const MediaServer&) = delete;

    [[nodiscard]] quint16 port() const;

    /// Opens the file now; it stays readable even if it is renamed or deleted. Another choice of tracks wants
    /// another publication, and so another URL. Fails with the reason in plain words.
    [[nodiscard]] std::expected<std::unique_ptr<Publication>, QString> publish(
        const QString& path, const QHostAddress& receiver, const TrackChoice& tracks = {});

  private:
    class Private;
    explicit MediaServer(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d_;
};

}  // namespace velmora
