#include "Desk/Accessible.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVariant>
#include <QUuid>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

const QString root = u"/org/a11y/atspi/accessible/root"_s;
const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
const QString actionInterface = u"org.a11y.atspi.Action"_s;
constexpr int patience = 5000;  // ms
/// No window is that deep; a circle would be.
constexpr int depthLimit = 60;

struct Place {
    QString service;
    QString path;
};

/// Questions to one object.
class Object {
  public:
    Object(const QDBusConnection& bus, Place place) : bus_(bus), place_(std::move(place)) {}

    [[nodiscard]] QDBusPendingCall ask(const QString& interface, const QString& method,
                                       const QVariantList& arguments = {}) const {
        QDBusMessage question =
            QDBusMessage::createMethodCall(place_.service, place_.path, interface, method);
        question.setArguments(arguments);
        return bus_.asyncCall(question, patience);
    }
    [[nodiscard]] QDBusPendingCall property(const QString& interface, const QString& name) const {
        return ask(u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    }

  private:
    QDBusConnection bus_;
    Place place_;
};

/// The first argument of the answer; invalid when there is none.
QVariant answer(QDBusPendingCall call) {
    call.waitForFinished();
    QVariant value = call.reply().arguments().value(0);
    if (call.isError()) return {};
    return value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
}

QList<Place> placesIn(const QVariant& value) {
    QList<Place> places;
    if (!value.isValid()) return places;
    const auto list = value.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString service;
        QDBusObjectPath path;
        list.beginStructure();
        list >> service >> path;
        list.endStructure();
        places.append({service, path.path()});
    }
    list.endArray();
    return places;
}

QStringList actionsIn(const QVariant& value) {
    QStringList names;
    if (!value.isValid()) return names;
    const auto list = value.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        QString words;
        QString keys;
        list.beginStructure();
        list >> name >> words >> keys;
        list.endStructure();
        names.append(name);
    }
    list.endArray();
    return names;
}

quint64 statesIn(const QVariant& value) {
    if (!value.isValid()) return 0;
    const auto words = qdbus_cast<QList<uint>>(value);
    return words.value(0) | static_cast<quint64>(words.value(1)) << 32;
}

QRect boundsIn(const QVariant& value) {
    if (!value.isValid()) return {};
    const auto numbers = value.value<QDBusArgument>();
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    numbers.beginStructure();
    numbers >> x >> y >> width >> height;
    numbers.endStructure();
    return {x, y, width, height};
}

QString addressOfAccessibility(const QDBusConnection& session) {
    const Object launcher(session, {u"org.a11y.Bus"_s, u"/org/a11y/bus"_s});
    return answer(launcher.ask(u"org.a11y.Bus"_s, u"GetAddress"_s)).toString();
}

}  // namespace

const Accessible* Accessible::find(const QString& wantedRole, const QString& wantedName) const {
    if (is(showing) && (wantedRole.isEmpty() || role == wantedRole) &&
        (wantedName.isEmpty() || name == wantedName))
        return this;
    for (const Accessible& child : children)
        if (const auto* found = child.find(wantedRole, wantedName)) return found;
    return nullptr;
}

QList<Accessible> Accessible::all(const QString& wantedRole, const QString& wantedName) const {
    QList<Accessible> found;
    if (is(showing) && (wantedRole.isEmpty() || role == wantedRole) &&
        (wantedName.isEmpty() || name == wantedName))
        found << *this;
    for (const Accessible& child : children) found += child.all(wantedRole, wantedName);
    return found;
}

QString Accessible::toText(int depth) const {
    QStringList words{role, u"“%1”"_s.arg(name)};
    if (!description.isEmpty()) words << u"(%1)"_s.arg(description);
    if (!is(showing)) words << u"hidden"_s;
    if (!is(enabled)) words << u"disabled"_s;
    if (is(focused)) words << u"focused"_s;
    if (is(checked)) words << u"checked"_s;
    words << u"%1×%2+%3+%4"_s.arg(bounds.width()).arg(bounds.height()).arg(bounds.x()).arg(bounds.y())
          << actions.join(u',');
    QString text = QString(depth * 2, u' ') + words.join(u' ') + u'\n';
    for (const Accessible& child : children) text += child.toText(depth + 1);
    return text;
}

AccessibilityBus::AccessibilityBus(const QDBusConnection& sessionBus)
    : name_(QUuid::createUuid().toString()),
      bus_(QDBusConnection::connectToBus(addressOfAccessibility(sessionBus), name_)) {}

AccessibilityBus::~AccessibilityBus() {
    QDBusConnection::disconnectFromBus(name_);
}

QString AccessibilityBus::application(qint64 pid) const {
    const Object registry(bus_, {u"org.a11y.atspi.Registry"_s, root});
    const QList<Place> applications = placesIn(answer(registry.ask(accessibleInterface, u"GetChildren"_s)));
    for (const Place& place : applications)
        if (bus_.interface()->servicePid(place.service) == pid) return place.service;
    return {};
}

std::optional<Accessible> AccessibilityBus::tree(qint64 pid) const {
    const QString service = application(pid);
    if (service.isEmpty()) return std::nullopt;
    return read(service, root, 0);
}

Accessible AccessibilityBus::read(const QString& service, const QString& path, int depth) const {
    const Object object(bus_, {service, path});
    // All at once: a window has many, and each answer has a long way.
    const auto role = object.ask(accessibleInterface, u"GetRoleName"_s);
    const auto name = object.property(accessibleInterface, u"Name"_s);
    const auto description = object.property(accessibleInterface, u"Description"_s);
    const auto states = object.ask(accessibleInterface, u"GetState"_s);
    const auto bounds = object.ask(u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {0U});
    const auto actions = object.ask(actionInterface, u"GetActions"_s);
    const auto children = object.ask(accessibleInterface, u"GetChildren"_s);
    Accessible read{.role = answer(role).toString(),
                    .name = answer(name).toString(),
                    .description = answer(description).toString(),
                    .states = statesIn(answer(states)),
                    .bounds = boundsIn(answer(bounds)),
                    .actions = actionsIn(answer(actions)),
                    .children = {},
                    .service = service,
                    .path = path};
    if (depth == depthLimit) return read;
    for (const Place& child : placesIn(answer(children)))
        read.children << this->read(child.service, child.path, depth + 1);
    return read;
}

bool AccessibilityBus::act(const Accessible& accessible, const QString& action) const {
    const qsizetype index = accessible.actions.indexOf(action);
    const Object object(bus_, {accessible.service, accessible.path});
    return index >= 0 &&
           answer(object.ask(actionInterface, u"DoAction"_s, {static_cast<int>(index)})).toBool();
}

QString AccessibilityBus::text(const Accessible& accessible) const {
    const Object object(bus_, {accessible.service, accessible.path});
    return answer(object.ask(u"org.a11y.atspi.Text"_s, u"GetText"_s, {0, -1})).toString();
}

std::optional<double> AccessibilityBus::value(const Accessible& accessible) const {
    const Object object(bus_, {accessible.service, accessible.path});
    const QVariant value = answer(object.property(u"org.a11y.atspi.Value"_s, u"CurrentValue"_s));
    return value.isValid() ? std::optional(value.toDouble()) : std::nullopt;
}

bool AccessibilityBus::setValue(const Accessible& accessible, double value) const {
    const Object object(bus_, {accessible.service, accessible.path});
    QDBusPendingCall call =
        object.ask(u"org.freedesktop.DBus.Properties"_s, u"Set"_s,
                   {u"org.a11y.atspi.Value"_s, u"CurrentValue"_s, QVariant::fromValue(QDBusVariant(value))});
    call.waitForFinished();
    return !call.isError();
}

}  // namespace velmora::test
