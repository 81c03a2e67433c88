#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace velmora {

/// Where one window's picture and sound go: this computer, or a television. Main thread only.
///
/// Nothing here fails: what the running system cannot tell is absent. It has no signal of its own; whoever
/// wants to know of changes polls.
class OutputContext {
  public:
    struct Device {
        std::optional<QString> name;        ///< for people
        std::optional<QString> identifier;  ///< stays the same when the device is renamed

        friend bool operator==(const Device&, const Device&) = default;
    };

    /// Bits of `outputDeviceFeatures`.
    enum Feature : quint64 { audio = 1, screen = 2, video = 4, everything = audio | screen | video };

    OutputContext() = default;
    OutputContext(const OutputContext&) = delete;
    OutputContext& operator=(const OutputContext&) = delete;
    virtual ~OutputContext() = default;

    /// The chosen device, whether or not it can be reached now; absent when output goes to this computer.
    /// Cheap: it is asked twice a second.
    [[nodiscard]] virtual std::optional<Device> outputDevice() const = 0;

    /// What goes to the chosen device, as a sum of `Feature`; absent when that cannot be told.
    [[nodiscard]] virtual std::optional<quint64> outputDeviceFeatures() const = 0;

    /// Chooses a device, or this computer (absent), for a sum of `Feature`. Takes effect at once in the two
    /// questions above; nobody is connected to before something plays. An identifier that is not known
    /// changes nothing.
    virtual void setOutputDevice(const std::optional<Device>& device, quint64 features) = 0;

    /// What was begun on the device waits for its viewer, who looks for a code or a password, or for the
    /// device to wake. However long that takes, it is no failure.
    [[nodiscard]] virtual bool awaitsViewer() const { return false; }

    /// Ends what was begun on the device, since the movie was closed. The choice stays.
    virtual void endPlayback() {}

    /// Unique among the contexts of this process; absent when pickers cannot be bound to this one.
    [[nodiscard]] virtual std::optional<QString> contextID() const = 0;
};

/// The part of a window that lets the user choose a device, implemented by the interface. Main thread only.
class RoutePicker : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// The context that the picker serves; absent while it serves none.
    [[nodiscard]] virtual std::optional<QString> outputContextID() const = 0;
    virtual void setOutputContextID(const QString& contextID) = 0;

    /// Devices that take video are offered first.
    virtual void setPrioritizesVideoDevices(bool on) = 0;

    /// Opens the menu of devices beside this picker.
    virtual void showRoutePickingControls(OutputContext& context) = 0;
};

}  // namespace velmora
