#pragma once

#include "Sender/Discovery/Sightings.h"
#include "System/Clock.h"

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <tuple>

class QDBusError;
class QDBusMessage;
class QDBusServiceWatcher;

namespace velmora {

class AvahiObject;

/// The `_airplay._tcp` services that the Avahi daemon sees, kept current on every interface and over IPv4 and
/// IPv6: Avahi asks again in time for whatever is browsed. Survives the daemon's and the bus's end, and takes
/// up again when they are back. Main thread only; never waits for the daemon.
///
/// Every signal of the daemon names its interface, protocol and service (or host), so signals are matched by
/// those: an object's path is not known yet when its first signals come.
class AvahiBrowser : public QObject {
    Q_OBJECT

  public:
    /// `busAddress` empty: the system bus.
    AvahiBrowser(Clock& clock, QString busAddress, QObject* parent = nullptr);
    ~AvahiBrowser() override;

    void start();

    /// What is seen and resolved now.
    [[nodiscard]] QList<Sighting> sightings() const;

    /// Why nothing can be seen, as a whole sentence; empty while browsing.
    [[nodiscard]] QString reason() const { return reason_; }

  Q_SIGNALS:
    /// The sightings or the reason may be different now.
    void changed();

  private Q_SLOTS:
    void itemNew(const QDBusMessage& message);
    void itemRemove(const QDBusMessage& message);
    void found(const QDBusMessage& message);
    void recordNew(const QDBusMessage& message);
    void recordRemove(const QDBusMessage& message);
    void browserFailure(const QDBusMessage& message);
    void busGone();

  private:
    /// Interface, protocol and name: of a service or of a host.
    using Key = std::tuple<int, int, QString>;

    struct Service {
        std::unique_ptr<AvahiObject> resolver;
        std::optional<Sighting> resolved{};  ///< its addresses are those of its host
        bool local = false;
    };
    struct Host {
        std::unique_ptr<AvahiObject> addresses4;
        std::unique_ptr<AvahiObject> addresses6;
        QList<QHostAddress> addresses;
    };

    void openBus();
    void closeBus();
    [[nodiscard]] bool subscribe();
    void watchDaemon();
    void browse();
    void refused(const QDBusError& error);
    void forgetAll(const QString& reason);
    [[nodiscard]] std::unique_ptr<AvahiObject> resolve(const Key& service) const;
    void browseAddresses(const Key& key, Host& host) const;
    void dropUnusedHosts();

    Clock& clock_;
    QString busAddress_;
    QString busName_;
    QDBusConnection bus_;
    std::unique_ptr<QDBusServiceWatcher> daemonWatcher_;
    Clock::Timer retry_;
    std::unique_ptr<AvahiObject> browser_;
    std::map<Key, Service> services_;
    std::map<Key, Host> hosts_;
    QString reason_;
};

}  // namespace velmora
