#pragma once

#include "Support/MessageBus.h"

namespace velmora::test {

/// A session bus for this process and its children alone. Made before anything uses the session bus, which is
/// looked up once a process.
class PrivateBus {
  public:
    PrivateBus() {
        if (bus_.address().isEmpty()) return;
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().toUtf8());
        isRunning() = true;
    }
    ~PrivateBus() { isRunning() = false; }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// False where there is no dbus-daemon.
    [[nodiscard]] static bool& isRunning() {
        static bool running = false;
        return running;
    }

  private:
    MessageBus bus_;
};

}  // namespace velmora::test
