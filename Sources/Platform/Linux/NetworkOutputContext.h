#pragma once

#include "Platform/Linux/RemoteOutput.h"
#include "Sender/Receiver.h"
#include "System/OutputContext.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>

namespace velmora {

/// A window's choice among the televisions on the network, and what plays on the chosen one. Main thread
/// only.
class NetworkOutputContext : public QObject, public OutputContext {
    Q_OBJECT

  public:
    struct World {
        /// Those that can be chosen: on the network now, then those that were used before.
        std::function<QList<Receiver>()> receivers;
        RemoteOutput::World output;
    };

    NetworkOutputContext(Clock& clock, World world, QObject* parent = nullptr);

    [[nodiscard]] std::optional<Device> outputDevice() const override;
    [[nodiscard]] std::optional<quint64> outputDeviceFeatures() const override;
    void setOutputDevice(const std::optional<Device>& device, quint64 features) override;
    [[nodiscard]] bool awaitsViewer() const override { return output_.awaitsViewer(); }
    void endPlayback() override { output_.end(); }
    [[nodiscard]] std::optional<QString> contextID() const override { return contextID_; }

    /// Chooses one of `receivers`, or any other: one that the user typed.
    void choose(const Receiver& receiver);
    [[nodiscard]] QList<Receiver> receivers() const { return world_.receivers(); }

    /// The chosen device.
    [[nodiscard]] const std::optional<Receiver>& chosen() const { return chosen_; }
    /// The chosen device, where it is one for pictures.
    [[nodiscard]] std::optional<Receiver> television() const;

    [[nodiscard]] RemoteOutput& output() { return output_; }

  private:
    World world_;
    QString contextID_;
    std::optional<Receiver> chosen_;
    quint64 features_ = 0;
    RemoteOutput output_;
};

}  // namespace velmora
