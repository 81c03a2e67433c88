#pragma once

#include "System/Clock.h"
#include "System/OutputContext.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>

namespace velmora {

/// Follows which device the output context is routed to, and shows the picker. Main thread only; without a
/// context it does nothing, and the movie plays on this computer.
class AirPlay : public QObject {
    Q_OBJECT

  public:
    using RouteChanged = std::function<void(const std::optional<QString>& deviceName)>;

    /// The clock and the context, which may be null, must outlive it.
    AirPlay(Clock& clock, OutputContext* context, QObject* parent = nullptr);

    /// Absent when output goes to this computer, or the device does not tell its name.
    [[nodiscard]] const std::optional<QString>& deviceName() const { return deviceName_; }
    [[nodiscard]] OutputContext* context() const { return context_; }

    /// Called with the new device's name on each change of route; also when only another device of the same
    /// name was chosen.
    void onRouteChange(RouteChanged callback) { onRouteChange_ = std::move(callback); }

    /// As of the context; false, and nothing, without one.
    [[nodiscard]] bool awaitsViewer() const;
    void endPlayback() const;

    /// Ties a picker to the context.
    void bind(RoutePicker& picker) const;

    /// The picker that `presentPicker` opens when it is given none.
    void setPickerAnchor(RoutePicker* picker) { pickerAnchor_ = picker; }
    void presentPicker(RoutePicker* from = nullptr) const;

  Q_SIGNALS:
    void deviceNameChanged();

  private:
    void schedulePoll();
    void poll();
    void noteRoute(const OutputContext::Device& device);

    Clock& clock_;
    OutputContext* context_;
    Clock::Timer timer_;
    std::optional<QString> lastDeviceID_;
    std::optional<QString> deviceName_;
    RouteChanged onRouteChange_;
    QPointer<RoutePicker> pickerAnchor_;
};

}  // namespace velmora
