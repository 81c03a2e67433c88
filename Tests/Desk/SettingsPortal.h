#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QThread>

namespace velmora::test {

/// What a desktop tells its programs to look like.
struct DesktopLook {
    bool isDark = false;
    bool hasHighContrast = false;
    bool animates = true;
};

/// The desktop's settings on a session bus, of which programs ask for their look. Answers on a thread of its
/// own, so that a program which asks never waits for the test.
class SettingsPortal : public QDBusVirtualObject {
  public:
    SettingsPortal(QDBusConnection bus, const DesktopLook& look);
    ~SettingsPortal() override;

    /// Running programs are told.
    void set(const DesktopLook& look);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  private:
    QDBusConnection bus_;
    QMutex mutex_;
    DesktopLook look_;  ///< guarded by the mutex
    QThread thread_;
};

}  // namespace velmora::test
