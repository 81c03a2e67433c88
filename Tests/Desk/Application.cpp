#include "Desk/Application.h"

#include "Support/WaitFor.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QFile>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

const QString playerPath = u"/org/mpris/MediaPlayer2"_s;
const QString playerInterface = u"org.mpris.MediaPlayer2.Player"_s;

int statusOf(const QProcess& process) {
    const bool isDone =
        process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
    return isDone ? process.exitCode() : -1;
}

bool hasEnded(QProcess& process) {
    return waitFor([&process] { return process.state() == QProcess::NotRunning; });
}

}  // namespace

QVariant BusPlayer::property(const QString& name) const {
    QDBusMessage question =
        QDBusMessage::createMethodCall(service_, playerPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << playerInterface << name;
    const QDBusReply<QDBusVariant> reply = bus_.call(question);
    return reply.isValid() ? reply.value().variant() : QVariant();
}

QVariantMap BusPlayer::metadata() const {
    return qdbus_cast<QVariantMap>(property(u"Metadata"_s));
}

bool BusPlayer::call(const QString& method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(service_, playerPath, playerInterface, method);
    message.setArguments(arguments);
    return bus_.call(message).type() == QDBusMessage::ReplyMessage;
}

Application::Application(Desk& desk, const QStringList& arguments, const LaunchSettings& settings)
    : desk_(desk), scale_(settings.scale), environment_(desk.environment()) {
    if (settings.scale != 1) environment_.insert(u"QT_SCALE_FACTOR"_s, QString::number(settings.scale));
    for (const auto& [name, value] : settings.environment.asKeyValueRange()) environment_.insert(name, value);
    process_.setProcessEnvironment(environment_);
    process_.start(QStringLiteral(VELMORA), arguments);
    process_.waitForStarted();
}

QByteArray Application::output() {
    return output_ += process_.readAllStandardOutput();
}

QByteArray Application::errors() {
    return errors_ += process_.readAllStandardError();
}

QString Application::log() const {
    QFile file(desk_.path(u"state/Logs/Velmora/velmora.log"_s));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

int Application::startAgain(const QStringList& arguments) const {
    ChildProcess second;
    second.setProcessEnvironment(environment_);
    second.start(QStringLiteral(VELMORA), arguments);
    return hasEnded(second) ? statusOf(second) : -1;
}

int Application::waitForExit() {
    return hasEnded(process_) ? statusOf(process_) : -1;
}

int Application::quit() {
    QDBusMessage quit = QDBusMessage::createMethodCall(u"com.quillet.velmora"_s, u"/com/quillet/velmora"_s,
                                                       u"org.freedesktop.Application"_s, u"ActivateAction"_s);
    quit << u"quit"_s << QVariantList() << QVariantMap();
    desk_.sessionBus().asyncCall(quit);
    return waitForExit();
}

QList<DesktopWindow> Application::windows() const {
    QList<DesktopWindow> windows = desk_.display().windows();
    windows.removeIf([this](const DesktopWindow& window) { return window.pid != pid(); });
    return windows;
}

bool Application::hasWindows(qsizetype count) const {
    return waitFor([&] { return windows().size() == count; });
}

std::optional<DesktopWindow> Application::window(const QString& title) const {
    const auto matches = [&title](const DesktopWindow& window) {
        return title.endsWith(u'*') ? window.title.startsWith(title.chopped(1)) : window.title == title;
    };
    std::optional<DesktopWindow> found;
    (void)waitFor([&] {
        const QList<DesktopWindow> all = windows();
        const auto place = std::ranges::find_if(all, matches);
        if (place != all.end()) found = *place;
        return found.has_value();
    });
    return found;
}

bool Application::bringForward(const DesktopWindow& window) const {
    desk_.display().activate(window.id);
    return waitFor([&] { return desk_.display().activeWindow() == window.id; });
}

QImage Application::picture(const DesktopWindow& window) const {
    // It may have been moved or resized since it was listed.
    for (const DesktopWindow& now : windows())
        if (now.id == window.id) return desk_.display().picture(now.geometry);
    return {};
}

namespace {

// The toolkit tells bounds as they would be without scaling.
void enlarge(Accessible& accessible, double scale) {
    const QRect told = accessible.bounds;
    accessible.bounds = QRect((QPointF(told.topLeft()) * scale).toPoint(), told.size() * scale);
    for (Accessible& child : accessible.children) enlarge(child, scale);
}

}  // namespace

std::optional<Accessible> Application::tree() const {
    auto everything = desk_.accessibility().tree(pid());
    if (everything) enlarge(*everything, scale_);
    return everything;
}

std::optional<Accessible> Application::find(const QString& role, const QString& name,
                                            const std::function<bool(const Accessible&)>& condition) const {
    std::optional<Accessible> found;
    (void)waitFor([&] {
        const auto everything = tree();
        if (!everything) return false;
        for (const Accessible& each : everything->all(role, name))
            if (!found && (!condition || condition(each))) found = each;
        return found.has_value();
    });
    return found;
}

bool Application::isGone(const QString& role, const QString& name) const {
    return waitFor([&] {
        const auto everything = tree();
        return everything && !everything->find(role, name);
    });
}

namespace {

bool canBePressed(const Accessible& accessible) {
    return accessible.is(Accessible::enabled) && !accessible.actions.isEmpty();
}

}  // namespace

bool Application::press(const QString& role, const QString& name) const {
    const auto control = find(role, name, canBePressed);
    return control && desk_.accessibility().act(*control, u"Press"_s);
}

bool Application::click(const QString& role, const QString& name) const {
    const auto control = find(role, name, canBePressed);
    if (!control) return false;
    desk_.display().click(control->bounds.center());
    return true;
}

QList<BusPlayer> Application::players() const {
    QStringList names = desk_.sessionBus().interface()->registeredServiceNames();
    names = names.filter(u"org.mpris.MediaPlayer2.velmora"_s);
    names.sort();
    QList<BusPlayer> players;
    for (const QString& name : std::as_const(names)) players << BusPlayer(desk_.sessionBus(), name);
    return players;
}

bool Application::openPicker() const {
    return click(u"push button"_s, u"Choose an Apple TV"_s) && find(u"popup menu"_s, u"Play on"_s);
}

bool Application::chooseTelevision(const QString& name) const {
    return openPicker() && press(u"menu item"_s, name) && isGone(u"popup menu"_s, u"Play on"_s);
}

bool Application::addTelevision(const QString& address) const {
    if (!openPicker() || !press(u"menu item"_s, u"Add a television by address…"_s)) return false;
    const auto isFocused = [](const Accessible& field) { return field.is(Accessible::focused); };
    const auto field = find({}, u"Name or address"_s, isFocused);
    return field && desk_.display().type(address) && desk_.display().press(Qt::Key_Return) &&
           isGone({}, u"Name or address"_s);
}

}  // namespace velmora::test
