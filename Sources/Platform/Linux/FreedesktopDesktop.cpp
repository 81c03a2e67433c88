#include "Platform/Linux/FreedesktopDesktop.h"

#include "Diagnostics/Log.h"
#include "Platform/Linux/RecentDocuments.h"

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QProcess>

namespace velmora {

using namespace Qt::StringLiterals;

FreedesktopDesktop::FreedesktopDesktop(MoviePicker picker, QDBusConnection sessionBus)
    : picker_(std::move(picker)), bus_(std::move(sessionBus)) {
    listing_.setMaxThreadCount(1);
}

void FreedesktopDesktop::pickMovie(const MovieDialog& dialog, Picked picked) {
    if (picker_) return picker_(dialog, std::move(picked));
    logger().error(u"desktop: there is no dialog to choose a movie with"_s);
    const auto tell = [picked = std::move(picked)] { picked(std::nullopt); };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

void FreedesktopDesktop::reveal(const QUrl& file) {
    if (!bus_.isConnected()) return openFolder(file);
    QDBusMessage message =
        QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                       u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    message.setArguments({QStringList(QString::fromLatin1(file.toEncoded())), QString()});
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, file] {
        watcher->deleteLater();
        if (watcher->isError()) openFolder(file);
    });
}

void FreedesktopDesktop::openFolder(const QUrl& file) {
    const QString folder = QFileInfo(file.toLocalFile()).absolutePath();
    if (!QProcess::startDetached(u"xdg-open"_s, {folder}))
        logger().error(u"desktop: the folder cannot be shown"_s);
}

void FreedesktopDesktop::noteRecentDocument(const QUrl& file) {
    listing_.start([file] {
        if (!RecentDocuments::add(file))
            logger().error(u"desktop: the list of recent documents cannot be changed"_s);
    });
}

}  // namespace velmora
