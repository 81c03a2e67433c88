#pragma once

#include "Sender/ConnectionError.h"
#include "Sender/PlaybackReport.h"

#include <QCoroTask>
#include <QHostAddress>
#include <QString>
#include <QUrl>

#include <expected>
#include <functional>
#include <memory>

namespace velmora {

/// The verbs of one receiver, in whatever dialect it speaks. Main thread only.
///
/// One verb at a time. Each answers within a bounded time; after `close`, with `closed`. An implementation
/// keeps itself alive while one of its verbs runs.
class VideoControl {
  public:
    using Outcome = std::expected<void, ConnectionError>;
    using Reported = std::expected<PlaybackReport, ConnectionError>;

    struct Movie {
        QUrl url;
        double start = 0;     ///< seconds
        double duration = 0;  ///< seconds; 0 when unknown
        QString uuid;         ///< 36 characters in upper case, new for each start
    };

    VideoControl() = default;
    VideoControl(const VideoControl&) = delete;
    VideoControl& operator=(const VideoControl&) = delete;
    virtual ~VideoControl() = default;

    /// Reaches the receiver, and gets it ready to be told to play.
    [[nodiscard]] virtual QCoro::Task<Outcome> open() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;
    /// The two ends of the connection, once open: what the movie's URL names, and who will fetch it.
    [[nodiscard]] virtual QHostAddress localAddress() const = 0;
    [[nodiscard]] virtual QHostAddress peerAddress() const = 0;

    /// Success means that the receiver understood, and nothing about the movie.
    [[nodiscard]] virtual QCoro::Task<Outcome> play(Movie movie) = 0;
    /// 1 plays, 0 pauses.
    [[nodiscard]] virtual QCoro::Task<Outcome> setRate(double rate) = 0;
    [[nodiscard]] virtual QCoro::Task<Outcome> seek(double seconds) = 0;
    [[nodiscard]] virtual QCoro::Task<Reported> playbackInfo() = 0;
    [[nodiscard]] virtual QCoro::Task<Outcome> stop() = 0;

    /// Ends every connection and every wait. Stops nothing on the receiver.
    virtual void close() = 0;
    /// Sends what stops the movie without waiting for anything, then closes: for destructors.
    virtual void abandon() = 0;

    /// Called from the event loop. It may be called for events about other movies.
    void onEvent(std::function<void(const PlaybackEvent&)> handler) { handler_ = std::move(handler); }

  protected:
    void deliver(const PlaybackEvent& event) const {
        if (handler_) handler_(event);
    }

  private:
    std::function<void(const PlaybackEvent&)> handler_;
};

}  // namespace velmora
