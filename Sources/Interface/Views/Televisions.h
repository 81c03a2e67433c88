#pragma once

#include "System/Clock.h"

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace velmora {

/// A television as the picker names it.
struct Television {
    enum class Asks { nothing, code, password };
    enum class Activity { none, waking, connecting };

    QString identifier;  ///< as an `OutputContext::Device` has it
    QString name;
    QString cannotShow{};       ///< why it takes no video, as the rest of a sentence; empty when it does
    Asks asks = Asks::nothing;  ///< what has to be typed before it plays
    Activity activity = Activity::none;
    std::optional<Clock::Instant> nextTry{};  ///< it refuses until then
    bool canForget = false;                   ///< something of it is stored that can be given up
    bool isAway = false;                      ///< known from before, and not seen on the network now

    friend bool operator==(const Television&, const Television&) = default;
};

/// What a television wants to know before it plays.
struct TelevisionQuestion {
    Television::Asks asks = Television::Asks::code;
    QString television;                       ///< its name
    bool wasWrong = false;                    ///< the last answer was
    bool isChecking = false;                  ///< an answer was given, and the verdict is not there yet
    std::optional<Clock::Instant> nextTry{};  ///< no answer is taken before; then it is asked again

    friend bool operator==(const TelevisionQuestion&, const TelevisionQuestion&) = default;
};

/// The televisions that one window can choose from, and what the chosen one asks. The picker reads it;
/// whoever knows the network implements it. Main thread only.
class Televisions : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// In any order.
    [[nodiscard]] virtual QList<Television> televisions() const = 0;
    /// Why none can be seen, as whole sentences; empty while they can.
    [[nodiscard]] virtual QString unavailableReason() const = 0;
    /// Called when the picker opens: a good moment to look harder.
    virtual void look() = 0;

    /// Adds the television at a host name or an address. Yields what is wrong with the text, as a whole
    /// sentence; empty when it was taken.
    [[nodiscard]] virtual QString add(const QString& address) = 0;
    /// Gives up what is stored of it.
    virtual void forget(const QString& identifier) = 0;

    /// The question that waits for the user; absent when none does.
    [[nodiscard]] virtual std::optional<TelevisionQuestion> question() const = 0;
    virtual void answer(const QString& secret) = 0;
    /// Nobody can or wants to answer: the movie does not go there.
    virtual void dismiss() = 0;

    /// Why the chosen television does not show the movie, or no longer does, as whole sentences; empty where
    /// there is nothing to tell.
    [[nodiscard]] virtual QString outcome() const = 0;

  Q_SIGNALS:
    void televisionsChanged();  ///< also the reason
    void questionChanged();
    void outcomeChanged();
};

}  // namespace velmora
