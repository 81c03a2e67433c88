#include "Desk/Desk.h"

#include "Platform/Linux/SettingsFile.h"
#include "Support/WaitFor.h"

#include <QDir>
#include <QStandardPaths>

namespace velmora::test {

using namespace Qt::StringLiterals;

QString Desk::whatIsMissing() {
    for (const QString& program : {u"Xvfb"_s, u"openbox"_s, u"dbus-daemon"_s})
        if (QStandardPaths::findExecutable(program).isEmpty()) return program;
    return {};
}

Desk::Desk(const DeskOptions& options) {
    makeHome(options);
    problem_ = startScreen(options);
    if (problem_.isEmpty()) problem_ = startManager();
    if (problem_.isEmpty()) problem_ = startBus(options.look);
}

Desk::~Desk() {
    accessibility_.reset();
    portal_.reset();
    if (!session_) return;
    const QString name = session_->name();
    session_.reset();
    QDBusConnection::disconnectFromBus(name);
}

void Desk::makeHome(const DeskOptions& options) {
    environment_ = QProcessEnvironment::systemEnvironment();
    // What the surrounding desktop may have set.
    for (const QString& name : {u"WAYLAND_DISPLAY"_s, u"XDG_CURRENT_DESKTOP"_s, u"XDG_ACTIVATION_TOKEN"_s,
                                u"DESKTOP_STARTUP_ID"_s, u"XAUTHORITY"_s, u"QT_STYLE_OVERRIDE"_s,
                                u"QT_QPA_PLATFORMTHEME"_s, u"QT_SCALE_FACTOR"_s, u"LANGUAGE"_s})
        environment_.remove(name);
    for (const QString& name : {u"config"_s, u"cache"_s, u"data"_s, u"state"_s}) {
        QDir().mkpath(path(name));
        environment_.insert(u"XDG_%1_HOME"_s.arg(name.toUpper()), path(name));
    }
    QDir().mkpath(path(u"run"_s));
    QFile::setPermissions(path(u"run"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    environment_.insert(u"XDG_RUNTIME_DIR"_s, path(u"run"_s));
    environment_.insert(u"HOME"_s, home_.path());
    environment_.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    environment_.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, options.systemBus.isEmpty()
                                                          ? u"unix:path="_s + path(u"no-system-bus"_s)
                                                          : options.systemBus);
    environment_.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment_.insert(u"QT_QUICK_BACKEND"_s, u"software"_s);
    environment_.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    environment_.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    // Nothing is to be heard.
    environment_.insert(u"PULSE_SERVER"_s, u"unix:"_s + path(u"no-sound"_s));
    environment_.insert(u"ALSA_CONFIG_PATH"_s, u"/dev/null"_s);
}

QString Desk::startScreen(const DeskOptions& options) {
    const QString size = u"%1x%2x24"_s.arg(options.size.width()).arg(options.size.height());
    screen_.setStandardErrorFile(path(u"screen.log"_s));
    screen_.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, size, u"-dpi"_s,
                              QString::number(options.dotsPerInch), u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    if (!waitFor([this] { return screen_.canReadLine() || screen_.state() == QProcess::NotRunning; }))
        return u"Xvfb does not start."_s;
    const QString name = u':' + QString::fromLatin1(screen_.readLine().trimmed());
    environment_.insert(u"DISPLAY"_s, name);
    auto display = Display::open(name);
    if (!display) return display.error();
    display_ = std::move(*display);
    return {};
}

QString Desk::startManager() {
    manager_.setProcessEnvironment(environment_);
    manager_.setStandardErrorFile(path(u"manager.log"_s));
    manager_.start(u"openbox"_s, {u"--sm-disable"_s});
    if (!waitFor([this] { return display_->isManaged(); })) return u"openbox does not start."_s;
    return {};
}

QString Desk::startBus(const DesktopLook& look) {
    bus_ = std::make_unique<MessageBus>(environment_);
    if (bus_->address().isEmpty()) return u"dbus-daemon does not start."_s;
    environment_.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus_->address());
    session_ = QDBusConnection::connectToBus(bus_->address(), home_.path());
    portal_ = std::make_unique<SettingsPortal>(*session_, look);
    accessibility_ = std::make_unique<AccessibilityBus>(*session_);
    if (!accessibility_->isConnected()) return u"There is no accessibility bus (at-spi2-core)."_s;
    return {};
}

void Desk::withPreferences(const std::function<void(Preferences&)>& change) const {
    // The file is where this process's environment says while it is opened.
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", path(u"config"_s).toLocal8Bit());
    SettingsFile preferences(u"com.quillet.velmora"_s);
    qputenv("XDG_CONFIG_HOME", before);
    change(preferences);
    preferences.synchronize();
}

}  // namespace velmora::test
