#pragma once

#include "Television/Options.h"

// After a library header: moc stumbles over <coroutine>, which the clock includes.
#include "Sender/Message.h"
#include "System/Clock.h"

#include <functional>

namespace velmora::test {

class SimulatedPlayer;

/// Answers one request, now or later; does nothing when its connection is gone.
using Reply = std::function<void(const Response&)>;

/// In a request's stead: a status to answer it with, or one of these.
constexpr int silence = 0;
constexpr int hangUp = -1;
using Interference = std::function<std::optional<int>(const Request& request)>;

/// What the parts of one television share.
struct Context {
    Clock& clock;
    const TelevisionOptions& options;
    SimulatedPlayer& player;
    std::function<void(const QString&)> complain;  ///< about what a sender did wrong
    std::function<void(const QString&)> say;       ///< to whoever watches

    Interference interfere{};  ///< null: nobody does

    int remotes = 0;          ///< open sessions for remote control only
    bool headless = false;    ///< it plays, and nothing is on the screen
    double lastDuration = 0;  ///< of the movie last played, in seconds
    bool awake = true;        ///< see `Misbehaviour::sleeps`
    Clock::Instant woken{};   ///< when `awake` became true

    [[nodiscard]] bool does(Misbehaviour misbehaviour) const { return options.does(misbehaviour); }
    [[nodiscard]] double numberOf(Misbehaviour misbehaviour) const { return options.numberOf(misbehaviour); }
};

}  // namespace velmora::test
