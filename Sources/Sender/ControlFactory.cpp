#include "Sender/ControlFactory.h"

#include "Sender/PlainControl.h"
#include "Sender/Session/SessionControl.h"

namespace velmora {

std::shared_ptr<VideoControl> makeControl(Clock& clock, const Approach& approach,
                                          std::shared_ptr<Access> access) {
    if (isEncrypted(approach.flavour)) return makeSessionControl(clock, access, approach.handover);
    return PlainControl::make(clock, std::move(access), approach.handover);
}

}  // namespace velmora
