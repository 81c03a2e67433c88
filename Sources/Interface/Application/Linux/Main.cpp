// velmora: movies in windows, and from there on televisions.
#include "Diagnostics/Log.h"
#include "Interface/Application/Freedesktop/SingleInstance.h"
#include "Interface/Application/LaunchOptions.h"
#include "Interface/Application/Linux/EndRequests.h"
#include "Interface/Application/Linux/LinuxWorld.h"
#include "Interface/Application/VelmoraApp.h"
#include "Interface/Translations/Translation.h"
#include "Interface/Updater/HttpsUpdateSource.h"
#include "Interface/Updater/Installation.h"

#include <QDBusConnection>
#include <QDir>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace Qt::StringLiterals;
using namespace velmora;

constexpr int doneStatus = 0;
constexpr int failedStatus = 1;
constexpr int usageStatus = 2;

int explain(int status, const QString& problem) {
    std::fprintf(stderr, "velmora: %s\n", qPrintable(problem));
    return status;
}

/// While the toolkit looks for a screen.
bool isStarting = false;

/// Qt's own remarks belong into the log.
void logRemark(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtDebugMsg || type == QtInfoMsg)
        logger().notice(message);
    else
        logger().error(message);
    if (type != QtFatalMsg) return;
    // Nothing that is wrong with the program, hence no memory image.
    if (isStarting) {
        logger().finish();
        std::_Exit(explain(failedStatus,
                           u"there is no desktop to open a window on. "
                           "For the terminal there is velmora-cast."_s));
    }
    explain(failedStatus, message);
}

/// What needs no screen is done without one. Nothing when the arguments ask for more, or make no sense yet:
/// some may be the toolkit's own.
std::optional<int> answerAtOnce(int argc, char** argv) {
    QStringList arguments;
    for (int argument = 1; argument < argc; ++argument) arguments << QString::fromLocal8Bit(argv[argument]);
    const auto options = LaunchOptions::parse(arguments, QDir::currentPath());
    if (!options) return std::nullopt;
    if (options->action == LaunchOptions::Action::help)
        std::fputs(qPrintable(LaunchOptions::help()), stdout);
    else if (options->action == LaunchOptions::Action::version)
        std::puts("velmora " VELMORA_VERSION);
    else
        return std::nullopt;
    return doneStatus;
}

Updater::Build build() {
    return {.version = QStringLiteral(VELMORA_VERSION),
            .feed = QUrl(QStringLiteral(VELMORA_UPDATE_FEED), QUrl::StrictMode),
            .key = QByteArray::fromHex(VELMORA_UPDATE_KEY),
            .keeper = installationKeeper(QCoreApplication::applicationFilePath())};
}

/// The desktop's permission to take the focus, which is this process's to use or to hand over.
QString takeActivationToken() {
    for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        const QString token = qEnvironmentVariable(name);
        if (!token.isEmpty()) return token;
    }
    return {};
}

int run(LaunchOptions options) {
    const bool isServing = options.action == LaunchOptions::Action::serve;
    options.request.activationToken = takeActivationToken();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    SingleInstance instance(bus, HandoverSocket::defaultPath());
    const auto role = instance.start(options.request);
    if (!role) return explain(failedStatus, role.error());
    if (*role == SingleInstance::Role::second) return doneStatus;

    LinuxWorld world;
    HttpsUpdateSource updates;
    Updater updater(build(), updates, world.preferences());
    VelmoraApp app(world, updater, bus);
    world.setMoviePicker([&app](const Desktop::MovieDialog& dialog, Desktop::Picked picked) {
        app.pickMovie(dialog, std::move(picked));
    });
    QObject::connect(&instance, &SingleInstance::requested, &app, &VelmoraApp::take);
    const EndRequests ends;
    QObject::connect(&ends, &EndRequests::requested, &app, [&app] { app.run(Command::quit, nullptr); });
    // The bus started us, and its request follows.
    if (!isServing) app.take(options.request);
    return QCoreApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto status = answerAtOnce(argc, argv)) return *status;
    qInstallMessageHandler(logRemark);
    QGuiApplication::setDesktopFileName(u"com.quillet.velmora"_s);
    isStarting = true;
    LinuxWorld::chooseGraphics();
    QGuiApplication application(argc, argv);
    isStarting = false;
    // The media player reads and writes numbers as the C locale does.
    std::setlocale(LC_NUMERIC, "C");
    speak(application, QLocale().uiLanguages(), u":/translations"_s);
    QGuiApplication::setApplicationName(u"velmora"_s);
    QGuiApplication::setApplicationDisplayName(u"Velmora"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QGuiApplication::setWindowIcon(QIcon(u":/icons/velmora/com.quillet.velmora.svg"_s));
    const auto options = LaunchOptions::parse(QCoreApplication::arguments().sliced(1), QDir::currentPath());
    if (!options) return explain(usageStatus, options.error() + u"\nTry 'velmora --help'."_s);
    return run(*options);
}
