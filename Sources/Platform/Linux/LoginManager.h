#pragma once

#include "Platform/Linux/Inhibitor.h"
#include "System/PowerManager.h"

#include <QDBusConnection>

#include <map>
#include <memory>

namespace velmora {

/// The buses of the system and of the user's session; either may be missing.
struct Buses {
    QDBusConnection system = QDBusConnection::systemBus();
    QDBusConnection session = QDBusConnection::sessionBus();
};

/// Keeps the computer awake through the login manager, or where there is none, through the desktop's screen
/// saver or its portal.
class LoginManager : public PowerManager {
  public:
    explicit LoginManager(Buses buses = {}) : buses_(std::move(buses)) {}

    [[nodiscard]] std::optional<Assertion> preventIdleSleep(const QString& reason) override;
    void release(Assertion assertion) override;

    /// Keeps the display lit until the returned object is dropped.
    [[nodiscard]] std::shared_ptr<void> lightDisplay() const;

  private:
    Buses buses_;
    std::map<Assertion, Inhibitor> held_;
    Assertion last_ = 0;
};

}  // namespace velmora
