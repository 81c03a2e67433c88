#include "Interface/Application/Freedesktop/FileChooserPortal.h"

#include "Diagnostics/Log.h"
#include "Platform/Linux/Portal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

/// What a portal's filter is made of on the wire: a(sa(us)).
struct PortalPattern {
    uint kind = 0;  // a pattern of a name
    QString glob;
};
struct PortalFilter {
    QString name;
    QList<PortalPattern> patterns;
};

// The other direction is for the type system alone.
QDBusArgument& operator<<(QDBusArgument& out, const PortalPattern& pattern) {
    out.beginStructure();
    out << pattern.kind << pattern.glob;
    out.endStructure();
    return out;
}
const QDBusArgument& operator>>(const QDBusArgument& in, PortalPattern& /*pattern*/) {
    return in;  // NOLINT(bugprone-return-const-ref-from-parameter): as Qt wants it
}
QDBusArgument& operator<<(QDBusArgument& out, const PortalFilter& filter) {
    out.beginStructure();
    out << filter.name << filter.patterns;
    out.endStructure();
    return out;
}
const QDBusArgument& operator>>(const QDBusArgument& in, PortalFilter& /*filter*/) {
    return in;  // NOLINT(bugprone-return-const-ref-from-parameter)
}

namespace {

const QString requestInterface = u"org.freedesktop.portal.Request"_s;

/// The portal may have to be started; the dialog itself is not waited for.
constexpr int startMilliseconds = 10'000;

enum Response : uint { chosen = 0, cancelled = 1 };

/// A pattern that takes the extension in any case.
QString globOf(const QString& extension) {
    QString glob = u"*."_s;
    for (const QChar letter : extension)
        glob += letter.isLetter() ? u"[%1%2]"_s.arg(letter.toLower()).arg(letter.toUpper()) : QString(letter);
    return glob;
}

QVariant filters(const FileChooserPortal::Question& question) {
    PortalFilter movies{question.extensionsName, {}};
    for (const QString& extension : question.extensions)
        movies.patterns.append({.kind = 0, .glob = globOf(extension)});
    const PortalFilter all{question.anythingName, {{.kind = 0, .glob = u"*"_s}}};
    return QVariant::fromValue(QList<PortalFilter>{movies, all});
}

}  // namespace

FileChooserPortal::FileChooserPortal(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
}

void FileChooserPortal::ask(const Question& question, Answered answered) {
    cancel();
    if (!bus_.isConnected()) {
        const auto tell = [answered = std::move(answered)] {
            answered(std::unexpected(Unavailable::noPortal));
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
        return;
    }
    answered_ = std::move(answered);
    static int count = 0;
    const QString token = u"velmora%1"_s.arg(++count);
    // Known before the portal answers: the user may be faster than that.
    const QString sender = bus_.baseService().mid(1).replace(u'.', u'_');
    listen(u"%1/request/%2/%3"_s.arg(Portal::path, sender, token));

    QVariantMap options{{u"handle_token"_s, token}, {u"modal"_s, true}, {u"multiple"_s, false}};
    if (question.wantsFolder)
        options.insert(u"directory"_s, true);
    else
        options.insert(u"filters"_s, filters(question));
    QDBusMessage message = QDBusMessage::createMethodCall(
        Portal::service, Portal::path, u"org.freedesktop.portal.FileChooser"_s, u"OpenFile"_s);
    message << question.parentWindow << question.title << options;
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, startMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked = handle_] {
        watcher->deleteLater();
        noteHandle(*watcher, asked);
    });
}

void FileChooserPortal::listen(const QString& handle) {
    handle_ = handle;
    bus_.connect(Portal::service, handle, requestInterface, u"Response"_s, this,
                 SLOT(respond(uint, QVariantMap)));
}

void FileChooserPortal::noteHandle(const QDBusPendingCallWatcher& call, const QString& asked) {
    if (handle_ != asked) return;  // answered already, or not wanted any more
    const QDBusPendingReply<QDBusObjectPath> reply(call);
    if (reply.isError()) {
        logger().notice(u"file dialog of the desktop: "_s + reply.error().message());
        return answer(std::unexpected(Unavailable::noPortal));
    }
    // Portals from before there were tokens choose their own.
    if (reply.value().path() == handle_) return;
    forgetHandle();
    listen(reply.value().path());
}

void FileChooserPortal::respond(uint response, const QVariantMap& results) {
    if (handle_.isEmpty()) return;
    const QUrl location(results.value(u"uris"_s).toStringList().value(0), QUrl::StrictMode);
    if (response == cancelled) return answer(std::nullopt);
    // What draws the dialog is missing, or broke.
    if (response != chosen || !location.isLocalFile()) return answer(std::unexpected(Unavailable::noPortal));
    answer(location);
}

void FileChooserPortal::cancel() {
    if (handle_.isEmpty()) return;
    bus_.send(QDBusMessage::createMethodCall(Portal::service, handle_, requestInterface, u"Close"_s));
    forgetHandle();
    answered_ = {};
}

void FileChooserPortal::forgetHandle() {
    bus_.disconnect(Portal::service, handle_, requestInterface, u"Response"_s, this,
                    SLOT(respond(uint, QVariantMap)));
    handle_.clear();
}

void FileChooserPortal::answer(const Answer& answer) {
    forgetHandle();
    if (const Answered answered = std::exchange(answered_, {})) answered(answer);
}

}  // namespace velmora
