#pragma once

#include "Sender/Message.h"

#include <QVariant>

namespace velmora::test {

[[nodiscard]] Response response(int status);
[[nodiscard]] Response xmlResponse(const QVariantMap& body);
[[nodiscard]] Response binaryResponse(const QVariantMap& body);

}  // namespace velmora::test
