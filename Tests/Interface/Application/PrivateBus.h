#pragma once

#include <QProcess>
#include <QString>

namespace velmora::test {

/// A session bus for this process and its children alone. Made before anything uses the session bus, which is
/// looked up once a process.
class PrivateBus {
  public:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                       QStringLiteral("--print-address")});
        if (!daemon_.waitForReadyRead(5000)) return;
        qputenv("DBUS_SESSION_BUS_ADDRESS", daemon_.readLine().trimmed());
        isRunning() = true;
    }
    ~PrivateBus() {
        isRunning() = false;
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// False where there is no dbus-daemon.
    [[nodiscard]] static bool& isRunning() {
        static bool running = false;
        return running;
    }

  private:
    QProcess daemon_;
};

}  // namespace velmora::test
