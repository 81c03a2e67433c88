#pragma once

#include "Sender/Receiver.h"

#include <QString>

/// Which receiver a user's words mean.
namespace velmora::Naming {

/// By its name, in any case, or its identifier.
[[nodiscard]] bool isCalled(const Receiver& receiver, const QString& text);

/// By its address, however that is written.
[[nodiscard]] bool isAt(const Receiver& receiver, const QString& text);

}  // namespace velmora::Naming
