#include "Sender/ControlFactory.h"

#include "Sender/PlainControl.h"

namespace velmora {

std::shared_ptr<VideoControl> makeControl(Clock& clock, const Approach& approach,
                                          std::shared_ptr<Access> access) {
    if (isEncrypted(approach.flavour)) return nullptr;
    return PlainControl::make(clock, std::move(access), approach.handover);
}

}  // namespace velmora
