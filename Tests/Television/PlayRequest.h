#pragma once

#include "Sender/Message.h"
#include "Television/SimulatedPlayer.h"

#include <expected>

namespace velmora::test {

/// The movie that a `/play` names, in either of its forms; or what is wrong with it.
[[nodiscard]] std::expected<SimulatedPlayer::Movie, QString> readPlayRequest(const Request& request);

}  // namespace velmora::test
