#include "System/SleepGuard.h"

#include <utility>

namespace velmora {

void SleepGuard::setActive(bool on) {
    if (std::exchange(isActive_, on) == on) return;
    if (on)
        assertion_ = power_.preventIdleSleep(QStringLiteral("Velmora is streaming a movie"));
    else if (const auto assertion = std::exchange(assertion_, std::nullopt))
        power_.release(*assertion);
}

}  // namespace velmora
