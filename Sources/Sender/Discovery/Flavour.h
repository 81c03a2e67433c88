#pragma once

#include "Sender/Receiver.h"

#include <QList>
#include <QString>

#include <array>
#include <optional>

namespace velmora {

/// How the control connection comes to be trusted. A password, where one is set, is asked for on top of it.
enum class Flavour {
    plain,       ///< no pairing
    legacyKeys,  ///< keys exchanged openly, a proof on each connection, no encryption
    legacyPin,   ///< a PIN once, then a proof on each connection, no encryption
    transient,   ///< encrypted session, nothing shown and nothing stored
    paired,      ///< encrypted session, a PIN once
};

[[nodiscard]] constexpr bool isEncrypted(Flavour flavour) {
    return flavour == Flavour::transient || flavour == Flavour::paired;
}

/// How a movie's address is handed over on it.
enum class Handover {
    playText,   ///< `/play` with lines of text: very old receivers
    play,       ///< `/play` with a property list
    playQueue,  ///< an item of the queue, through `/command`; encrypted sessions only
};

/// What they are called in files and in the log, in the order of the enumerations.
inline constexpr std::array flavourNames{QLatin1StringView("plain"), QLatin1StringView("legacyKeys"),
                                         QLatin1StringView("legacyPin"), QLatin1StringView("transient"),
                                         QLatin1StringView("paired")};
inline constexpr std::array handoverNames{QLatin1StringView("playText"), QLatin1StringView("play"),
                                          QLatin1StringView("playQueue")};

struct Approach {
    Flavour flavour = Flavour::plain;
    Handover handover = Handover::play;
    bool operator==(const Approach&) const = default;
};

/// What worked on a receiver, and on which version of its system: an update may change it.
struct Capability {
    QString version;
    Approach approach;
    bool operator==(const Capability&) const = default;
};

/// The secrets at hand for a receiver.
struct Secrets {
    bool pairing = false;
    bool password = false;
};

/// What the receiver has answered to the attempts of one start so far. It overrules what was announced.
class Answers {
  public:
    enum class Step {
        showPin,   ///< `/pair-pin-start`
        pairing,   ///< setting up or verifying a pairing
        session,   ///< the session's and the stream's `SETUP`
        handover,  ///< `/play`, or the item's insertion
    };

    static constexpr int timedOut = 0;  ///< in place of a status: no answer came in time
    static constexpr int closed = -1;   ///< in place of a status: the receiver closed the connection instead

    /// Notes an answer's final status: after its retries, and 401 only after the password at hand was
    /// offered. A time-out before the hand-over changes nothing: no other approach would cure it.
    void note(const Approach& approach, Step step, int status);
    /// A request for the movie itself arrived from the receiver.
    void noteFetched() { accepted_ = true; }
    /// The hand-over was answered kindly and for a long time nothing was fetched.
    void noteSilence(const Approach& approach) { refused_.append(approach); }

  private:
    friend struct Course;
    void noteKind(const Approach& approach, Step step);
    void noteUnauthorised(const Approach& approach, Step step, int status);
    void noteSilent(const Approach& approach, Step step, int status);
    void noteDistrusted(Flavour flavour);

    QList<Approach> refused_;
    QList<Flavour> refusedFlavours_;
    bool asksPassword_ = false;
    bool asksPairing_ = false;
    bool secretsRefused_ = false;
    bool restricted_ = false;
    bool busy_ = false;
    bool accepted_ = false;
};

/// What to try on a receiver.
struct Course {
    QList<Approach> approaches{};  ///< best first; empty: nothing more is to be tried
    bool needsPin = false;         ///< the first approach shows a PIN that the user has to type
    bool needsPassword = false;
    QString
        explanation{};  ///< why nothing can be tried, as whole sentences; empty when simply all was refused

    /// Decided from what the receiver announces, the secrets at hand, its answers, and what worked before.
    /// Once the receiver has taken the movie there is nothing more to try: offered again, it could play
    /// twice.
    [[nodiscard]] static Course decide(const Receiver& receiver, const Secrets& secrets,
                                       const Answers& answers, const std::optional<Capability>& worked = {});
};

/// The version that a `Capability` is bound to: the system's, else the AirPlay stack's.
[[nodiscard]] QString versionOf(const Receiver& receiver);

}  // namespace velmora
