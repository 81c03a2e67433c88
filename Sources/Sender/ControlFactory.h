#pragma once

#include "Sender/Access.h"
#include "Sender/VideoControl.h"

#include <memory>

namespace velmora {

/// The control that hands a movie over in this way.
[[nodiscard]] std::shared_ptr<VideoControl> makeControl(Clock& clock, const Approach& approach,
                                                        std::shared_ptr<Access> access);

}  // namespace velmora
