#pragma once

#include <QString>

namespace velmora {

/// Who keeps an installation with this program file current: words for the user, as in "by …"; empty when
/// nobody does, and the user installs updates. Pure.
[[nodiscard]] QString installationKeeper(const QString& programFile);

}  // namespace velmora
