#include "Interface/Application/Freedesktop/ApplicationService.h"

#include "Diagnostics/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr auto busName = "com.quillet.velmora"_L1;
constexpr auto objectPath = "/com/quillet/velmora"_L1;
constexpr auto interfaceName = "org.freedesktop.Application"_L1;

/// A process that has just started may be making its first window.
constexpr int handoverMilliseconds = 10'000;

QVariantMap platformData(const LaunchRequest& request) {
    if (request.activationToken.isEmpty()) return {};
    return {{u"activation-token"_s, request.activationToken},
            {u"desktop-startup-id"_s, request.activationToken}};
}

QDBusMessage message(const LaunchRequest& request) {
    const auto call = [](QLatin1StringView method) {
        return QDBusMessage::createMethodCall(busName, objectPath, interfaceName, method);
    };
    using enum LaunchRequest::Action;
    QDBusMessage message;
    switch (request.action) {
        case activate:
            message = call("Activate"_L1);
            break;
        case open: {
            QStringList uris;
            for (const QUrl& movie : request.movies) uris << QString::fromUtf8(movie.toEncoded());
            message = call("Open"_L1);
            message << uris;
            break;
        }
        default:
            message = call("ActivateAction"_L1);
            message << LaunchRequest::name(request.action) << QVariantList();
            break;
    }
    message << platformData(request);
    // Whoever has gone meanwhile is not started again for this: then it is our turn.
    message.setAutoStartService(false);
    return message;
}

}  // namespace

ApplicationService::ApplicationService(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {
    new ApplicationAdaptor(*this);
}

bool ApplicationService::claim() {
    // The object before the name: whoever sees the name may call at once.
    if (!bus_.registerObject(objectPath, this)) return false;
    const auto reply = bus_.interface()->registerService(busName, QDBusConnectionInterface::DontQueueService);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) return true;
    bus_.unregisterObject(objectPath);
    return false;
}

std::expected<void, ApplicationService::HandoverError> ApplicationService::handOver(
    const LaunchRequest& request) {
    const QDBusMessage answer = bus_.call(message(request), QDBus::Block, handoverMilliseconds);
    if (answer.type() != QDBusMessage::ErrorMessage) return {};
    logger().notice(u"handover to the running application: "_s + answer.errorMessage());
    const QDBusError error(answer);
    const bool isGone = error.type() == QDBusError::ServiceUnknown ||
                        error.type() == QDBusError::UnknownObject ||
                        error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
    return std::unexpected(isGone ? HandoverError::nobodyThere : HandoverError::noAnswer);
}

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
    pass({LaunchRequest::Action::activate}, platformData);
}

void ApplicationAdaptor::Open(const QStringList& uris, const QVariantMap& platformData) {
    const QList<QUrl> movies = LaunchRequest::locations(uris);
    pass({movies.isEmpty() ? LaunchRequest::Action::activate : LaunchRequest::Action::open, movies},
         platformData);
}

void ApplicationAdaptor::ActivateAction(const QString& name, const QVariantList& /*parameters*/,
                                        const QVariantMap& platformData) {
    const auto action = LaunchRequest::actionNamed(name);
    if (action && *action != LaunchRequest::Action::open) pass({*action}, platformData);
}

void ApplicationAdaptor::pass(LaunchRequest request, const QVariantMap& platformData) {
    request.activationToken = platformData.value(u"activation-token"_s).toString();
    if (request.activationToken.isEmpty())
        request.activationToken = platformData.value(u"desktop-startup-id"_s).toString();
    // Making a window takes its time; the caller is not kept waiting for it.
    QMetaObject::invokeMethod(
        &service_, [this, request] { Q_EMIT service_.requested(request); }, Qt::QueuedConnection);
}

}  // namespace velmora
