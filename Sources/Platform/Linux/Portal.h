#pragma once

#include <QLatin1StringView>

/// The service through which a desktop lends programs its dialogs, settings and promises, on the session bus.
namespace velmora::Portal {

inline constexpr QLatin1StringView service("org.freedesktop.portal.Desktop");
inline constexpr QLatin1StringView path("/org/freedesktop/portal/desktop");

}  // namespace velmora::Portal
