#include "Platform/Linux/NetworkOutputContext.h"

#include <algorithm>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

QString nextContextID() {
    static int last = 0;
    return u"context %1"_s.arg(++last);
}

bool isDevice(const Receiver& receiver, const OutputContext::Device& device) {
    if (device.identifier) return receiver.identifier == device.identifier;
    return receiver.name == device.name;
}

}  // namespace

NetworkOutputContext::NetworkOutputContext(Clock& clock, World world, QObject* parent)
    : QObject(parent), world_(std::move(world)), contextID_(nextContextID()), output_(clock, world_.output) {}

std::optional<OutputContext::Device> NetworkOutputContext::outputDevice() const {
    if (!chosen_) return std::nullopt;
    return Device{.name = chosen_->name, .identifier = chosen_->identifier};
}

std::optional<quint64> NetworkOutputContext::outputDeviceFeatures() const {
    if (!chosen_) return std::nullopt;
    return features_;
}

void NetworkOutputContext::setOutputDevice(const std::optional<Device>& device, quint64 features) {
    if (!device) {
        chosen_.reset();
        return;
    }
    QList<Receiver> known = receivers();
    if (chosen_) known.prepend(*chosen_);
    const auto found =
        std::ranges::find_if(known, [&](const Receiver& receiver) { return isDevice(receiver, *device); });
    if (found == known.end()) return;
    choose(*found);
    features_ &= features;
}

void NetworkOutputContext::choose(const Receiver& receiver) {
    chosen_ = receiver;
    // Sound comes with the picture, and there is no mirroring of the screen.
    features_ = receiver.takesVideo() ? quint64{Feature::video} : 0;
}

std::optional<Receiver> NetworkOutputContext::television() const {
    return chosen_ && (features_ & Feature::video) != 0 ? chosen_ : std::nullopt;
}

}  // namespace velmora
