// The main of tests that meet the desktop: a session bus of their own, a home of their own, and no screen.
// With "hand-over" as its first argument it is a second start of the application instead.
#include "Interface/Application/Freedesktop/SingleInstance.h"
#include "Interface/Application/LaunchOptions.h"
#include "Interface/Application/PrivateBus.h"

#include <QDBusConnection>
#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace velmora;

/// hand-over SOCKET [ARGUMENT...]
int startAgain(QStringList arguments) {
    const QString socket = arguments.takeFirst();
    const auto options = LaunchOptions::parse(arguments, QDir::currentPath());
    SingleInstance instance(QDBusConnection::sessionBus(), socket);
    const auto role = instance.start(options->request);
    return role && *role == SingleInstance::Role::second ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (argc > 2 && QByteArrayView(argv[1]) == "hand-over") {
        const QCoreApplication application(argc, argv);
        return startAgain(QCoreApplication::arguments().sliced(2));
    }
    const QTemporaryDir home;
    for (const char* name :
         {"XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
        const QString folder = home.filePath(QString::fromLatin1(name).toLower());
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, QFile::encodeName(folder));
    }
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    const velmora::test::PrivateBus bus;
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
