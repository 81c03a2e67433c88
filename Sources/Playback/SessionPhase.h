#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>
#include <variant>

namespace velmora {

/// Where a window is: nothing open, preparing a movie, ready to play it, or failed. A value.
class SessionPhase {
  public:
    struct Preparation {
        QUrl source;
        std::optional<double> progress = {};  ///< 0…1; absent when unknown
        QString stage;
        std::optional<double> eta = {};  ///< seconds

        friend bool operator==(const Preparation&, const Preparation&) = default;
    };
    struct Playback {
        QUrl source;                 ///< the movie
        QUrl file;                   ///< what is played
        QString note;                ///< one line about what was prepared
        QStringList subtitleTitles;  ///< of the subtitle tracks in `file`, in their order

        friend bool operator==(const Playback&, const Playback&) = default;
    };
    struct Failure {
        std::optional<QUrl> source;
        QString message;            ///< for the user
        bool canTranscode = false;  ///< re-encoding may help

        friend bool operator==(const Failure&, const Failure&) = default;
    };

    SessionPhase() = default;
    SessionPhase(Preparation preparation) : value_(std::move(preparation)) {}
    SessionPhase(Playback playback) : value_(std::move(playback)) {}
    SessionPhase(Failure failure) : value_(std::move(failure)) {}

    [[nodiscard]] bool isIdle() const { return std::holds_alternative<std::monostate>(value_); }
    /// Null in any other phase.
    [[nodiscard]] const Preparation* preparing() const { return std::get_if<Preparation>(&value_); }
    [[nodiscard]] const Playback* ready() const { return std::get_if<Playback>(&value_); }
    [[nodiscard]] const Failure* failed() const { return std::get_if<Failure>(&value_); }

    /// The movie; absent when idle, or when there is none to name in a failure.
    [[nodiscard]] std::optional<QUrl> source() const;
    /// For the window's title.
    [[nodiscard]] QString title() const;

    friend bool operator==(const SessionPhase&, const SessionPhase&) = default;

  private:
    std::variant<std::monostate, Preparation, Playback, Failure> value_;
};

}  // namespace velmora
