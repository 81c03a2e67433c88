#pragma once

#include "Sender/Session/MediaRemote/MediaRemote.h"

#include <optional>
#include <string>

namespace velmora {

/// What an Apple TV tells a remote control about the movie that was handed to it. The messages name neither
/// its address nor its identifier; it is known by being new and as long as ours. They are partial: what one
/// leaves out is as it was.
class RemotePlayer {
  public:
    struct Sample {
        double position = 0;  ///< seconds, `age` seconds ago
        double age = 0;       ///< as the receiver's clock has it; 0 when that cannot be right
        double rate = 0;      ///< 0 paused
        bool operator==(const Sample&) const = default;
    };

    /// From now on the movie of this length, in seconds, is ours.
    void expect(double duration);

    /// `wallClock`: seconds since 2001, now. True when the message tells a new position or rate of our movie.
    [[nodiscard]] bool take(const remote::Envelope& message, double wallClock);

    [[nodiscard]] const std::optional<Sample>& sample() const { return sample_; }
    [[nodiscard]] const std::optional<remote::PlayerPath>& path() const { return path_; }

  private:
    struct Told {
        std::optional<double> duration, elapsed, rate, stamp;
        bool operator==(const Told&) const = default;
    };

    template <class Message>
    [[nodiscard]] static bool isForeign(const Message& message);
    [[nodiscard]] bool isOurs(const std::optional<double>& duration) const;
    bool takeItem(const remote::ContentItem& item);
    bool takeNowPlaying(const remote::NowPlaying& info);
    [[nodiscard]] bool resample(double wallClock);

    double duration_ = 0;
    std::string item_;  // its identifier there, once seen
    Told told_;
    std::optional<Told> sampled_;
    std::optional<Sample> sample_;
    std::optional<remote::PlayerPath> path_;
};

}  // namespace velmora
