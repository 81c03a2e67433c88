#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace velmora {

/// Something that a service on a bus holds back for us: asked for on construction at the first service that
/// grants it, given back on destruction, or as soon as it is granted after that. Main thread only; never
/// waits. Where no service grants it there is a log line and nothing is held back.
class Inhibitor {
  public:
    /// One service that may grant it.
    struct Offer {
        QDBusConnection bus;
        QDBusMessage request;
        /// Makes of the answer what gives it back when it is dropped; null when the answer makes no sense.
        std::function<std::shared_ptr<void>(const QDBusMessage& answer)> hold;
    };

    explicit Inhibitor(QList<Offer> offers);

    /// The login manager: no sleep for want of a user. Lasts until then, or until this process ends.
    [[nodiscard]] static Offer idleSleep(const QDBusConnection& systemBus, const QString& reason);
    /// The session's screen saver, and the portal for sandboxes: neither a dark display nor sleep.
    [[nodiscard]] static Offer screenSaver(const QDBusConnection& sessionBus, const QString& reason);
    [[nodiscard]] static Offer portal(const QDBusConnection& sessionBus, const QString& reason);

  private:
    struct State {
        QList<Offer> offers;
        std::shared_ptr<void> held;
    };
    static void askNext(const std::shared_ptr<State>& state);
    static void take(const std::weak_ptr<State>& asking, const Offer& offer, const QDBusMessage& answer);

    std::shared_ptr<State> state_;
};

}  // namespace velmora
