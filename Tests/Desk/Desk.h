#pragma once

#include "Desk/Accessible.h"
#include "Desk/Display.h"
#include "Desk/SettingsPortal.h"
#include "Support/ChildProcess.h"
#include "Support/MessageBus.h"

#include <QProcessEnvironment>
#include <QSize>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace velmora {
class Preferences;
}

namespace velmora::test {

struct DeskOptions {
    QSize size{1280, 800};
    int dotsPerInch = 96;
    DesktopLook look{};
    QString systemBus{};  ///< address of the bus that programs find Avahi on; empty: there is none
};

/// A user's desktop of our own: a screen that nobody sees, a window manager, a session bus with
/// accessibility, and an empty home. Nothing of it touches this process's environment, so there may be
/// several. All of it ends with the object, and with this process, whatever kills that. Main thread.
class Desk {
  public:
    /// The first program without which there is no desk; empty when all are there.
    [[nodiscard]] static QString whatIsMissing();

    /// Waits until everything runs; `problem` tells when something does not.
    explicit Desk(const DeskOptions& options = {});
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Empty when the desk is ready. Otherwise it must not be used.
    [[nodiscard]] const QString& problem() const { return problem_; }

    /// For programs that run on it.
    [[nodiscard]] const QProcessEnvironment& environment() const { return environment_; }
    /// Inside the home.
    [[nodiscard]] QString path(const QString& name) const { return home_.filePath(name); }

    [[nodiscard]] Display& display() { return *display_; }
    [[nodiscard]] QDBusConnection& sessionBus() { return *session_; }
    [[nodiscard]] const AccessibilityBus& accessibility() const { return *accessibility_; }

    /// Running programs follow.
    void setLook(const DesktopLook& look) { portal_->set(look); }
    /// Reads or changes what the program remembers. While it runs, it sees the change.
    void withPreferences(const std::function<void(Preferences&)>& change) const;

  private:
    void makeHome(const DeskOptions& options);
    [[nodiscard]] QString startScreen(const DeskOptions& options);
    [[nodiscard]] QString startManager();
    [[nodiscard]] QString startBus(const DesktopLook& look);

    QTemporaryDir home_;
    QProcessEnvironment environment_;
    QString problem_;
    ChildProcess screen_;
    std::unique_ptr<Display> display_;
    ChildProcess manager_;
    std::unique_ptr<MessageBus> bus_;
    std::optional<QDBusConnection> session_;
    std::unique_ptr<SettingsPortal> portal_;
    std::unique_ptr<AccessibilityBus> accessibility_;
};

}  // namespace velmora::test
