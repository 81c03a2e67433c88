// The main of every test program: a Qt application object, and a home of its own, so that no test reads
// or writes the user's log, caches or preferences.
#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    for (const char* name :
         {"XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
        const QString folder = home.filePath(QString::fromLatin1(name).toLower());
        QDir().mkpath(folder);
        qputenv(name, QFile::encodeName(folder));
    }
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
