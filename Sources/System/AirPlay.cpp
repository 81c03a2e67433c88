#include "System/AirPlay.h"

#include "Diagnostics/Log.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration pollInterval = 500ms;

QString featureText(const std::optional<quint64>& features) {
    return features ? QString::number(*features) : u"-1"_s;
}

}  // namespace

AirPlay::AirPlay(Clock& clock, OutputContext* context, QObject* parent)
    : QObject(parent), clock_(clock), context_(context) {
    if (context_)
        schedulePoll();
    else
        logger().error(u"AVOutputContext unavailable; AirPlay video disabled"_s);
}

void AirPlay::schedulePoll() {
    timer_ = clock_.after(pollInterval, [this] {
        schedulePoll();
        poll();
    });
}

void AirPlay::poll() {
    const std::optional<OutputContext::Device> device = context_->outputDevice();
    const std::optional<QString> name = device ? device->name : std::nullopt;
    const std::optional<QString> key = device && device->identifier ? device->identifier : name;
    if (key == lastDeviceID_) return;
    lastDeviceID_ = key;
    if (name != deviceName_) {
        deviceName_ = name;
        Q_EMIT deviceNameChanged();
    }
    if (device)
        noteRoute(*device);
    else
        logger().notice(u"AirPlay route → this Mac"_s);
    if (onRouteChange_) onRouteChange_(name);
}

void AirPlay::noteRoute(const OutputContext::Device& device) {
    const std::optional<quint64> features = context_->outputDeviceFeatures();
    logger().notice(
        u"AirPlay route → %1 (features %2)"_s.arg(device.name.value_or(u"?"_s), featureText(features)));
    // A device that was chosen for its sound alone would never show the picture.
    if (!features || (*features & OutputContext::video)) return;
    context_->setOutputDevice(device, OutputContext::everything);
    logger().notice(u"re-attached for all features → "_s + featureText(context_->outputDeviceFeatures()));
}

bool AirPlay::awaitsViewer() const {
    return context_ && context_->awaitsViewer();
}

void AirPlay::endPlayback() const {
    if (context_) context_->endPlayback();
}

void AirPlay::bind(RoutePicker& picker) const {
    if (!context_) return;
    const std::optional<QString> contextID = context_->contextID();
    if (!contextID || picker.outputContextID() == contextID) return;
    picker.setPrioritizesVideoDevices(true);
    picker.setOutputContextID(*contextID);
}

void AirPlay::presentPicker(RoutePicker* from) const {
    RoutePicker* const anchor = from ? from : pickerAnchor_.data();
    if (context_ && anchor) anchor->showRoutePickingControls(*context_);
}

}  // namespace velmora
