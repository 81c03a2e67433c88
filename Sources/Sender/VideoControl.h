#pragma once

#include "Sender/ConnectionError.h"
#include "Sender/PlaybackReport.h"
#include "System/Clock.h"

#include <QCoroTask>
#include <QHostAddress>
#include <QString>
#include <QUrl>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

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

    /// What `open` or `play` waits for, and only the user or the receiver can give.
    struct Hold {
        enum class Kind {
            waking,    ///< the receiver gets up, or asks its viewer for consent
            pin,       ///< the receiver shows a PIN, to be given to `supply`
            password,  ///< to be given to `supply`
        };

        Kind kind = Kind::waking;
        QString message{};           ///< why it is asked for again, as whole sentences; empty at first
        Clock::Instant notBefore{};  ///< the receiver takes no answer until then
        bool operator==(const Hold&) const = default;
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
    /// The movie that `play` handed over was never fetched. True when there is another way to hand it over:
    /// `play` again takes it.
    [[nodiscard]] virtual bool tryAnotherWay() { return false; }
    /// The receiver has asked for the movie: the way in which it was handed over works.
    virtual void noteFetched() {}
    /// 1 plays, 0 pauses.
    [[nodiscard]] virtual QCoro::Task<Outcome> setRate(double rate) = 0;
    [[nodiscard]] virtual QCoro::Task<Outcome> seek(double seconds) = 0;
    [[nodiscard]] virtual QCoro::Task<Reported> playbackInfo() = 0;
    [[nodiscard]] virtual QCoro::Task<Outcome> stop() = 0;

    /// Ends every connection and every wait. Stops nothing on the receiver.
    virtual void close() = 0;
    /// Sends what stops the movie without waiting for anything, then closes: for destructors.
    virtual void abandon() = 0;

    /// What is waited for now; `onHold` tells of changes, from the event loop.
    [[nodiscard]] virtual std::optional<Hold> hold() const { return std::nullopt; }
    /// The PIN or the password that `hold` asks for. Without effect when it asks for nothing.
    virtual void supply(const QString& /*secret*/) {}
    void onHold(std::function<void()> handler) { holdHandler_ = std::move(handler); }

    /// Called from the event loop. It may be called for events about other movies.
    void onEvent(std::function<void(const PlaybackEvent&)> handler) { handler_ = std::move(handler); }

  protected:
    void deliver(const PlaybackEvent& event) const {
        if (handler_) handler_(event);
    }
    void holdChanged() const {
        if (holdHandler_) holdHandler_();
    }

  private:
    std::function<void(const PlaybackEvent&)> handler_;
    std::function<void()> holdHandler_;
};

}  // namespace velmora
