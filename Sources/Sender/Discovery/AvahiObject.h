#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariantList>

#include <functional>
#include <memory>

class QDBusError;

namespace velmora {

/// A browser or resolver that the Avahi daemon keeps for us: asked for on construction, freed on destruction.
/// Main thread only. When the daemon refuses, `failed` is called, unless this is gone by then.
class AvahiObject {
  public:
    /// `type` is `ServiceBrowser` and the like: made by the server's method `<type>New`.
    AvahiObject(const QDBusConnection& bus, const QString& type, const QVariantList& arguments,
                std::function<void(const QDBusError&)> failed = {});
    ~AvahiObject();
    AvahiObject(const AvahiObject&) = delete;
    AvahiObject& operator=(const AvahiObject&) = delete;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

namespace Avahi {

inline constexpr QLatin1StringView service("org.freedesktop.Avahi");

/// `org.freedesktop.Avahi.<type>`.
[[nodiscard]] QString interfaceOf(const QString& type);

}  // namespace Avahi

}  // namespace velmora
