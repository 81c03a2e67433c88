#pragma once

#include "System/OutputContext.h"
#include "System/PowerManager.h"
#include "System/Preferences.h"

#include <QList>
#include <QMap>
#include <QSet>

namespace velmora::test {

using namespace Qt::StringLiterals;

class MapPreferences : public Preferences {
  public:
    QMap<QString, QVariant> values;
    int synchronized = 0;

    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override {
        return values.contains(key) ? std::optional(values.value(key)) : std::nullopt;
    }
    void set(const QString& key, const QVariant& value) override { values.insert(key, value); }
    void remove(const QString& key) override { values.remove(key); }
    [[nodiscard]] QStringList keys() const override { return values.keys(); }
    void synchronize() override { ++synchronized; }
};

class ScriptedContext : public OutputContext {
  public:
    std::optional<Device> device;
    std::optional<quint64> features = 7;
    std::optional<QString> identifier = u"context 1"_s;
    int timesSet = 0;
    bool isAwaitingViewer = false;
    int timesEnded = 0;

    void choose(const QString& name) { device = Device{name, u"id of "_s + name}; }

    [[nodiscard]] std::optional<Device> outputDevice() const override { return device; }
    [[nodiscard]] std::optional<quint64> outputDeviceFeatures() const override { return features; }
    void setOutputDevice(const std::optional<Device>& wanted, quint64 wantedFeatures) override {
        ++timesSet;
        device = wanted;
        features = wantedFeatures;
    }
    [[nodiscard]] bool awaitsViewer() const override { return isAwaitingViewer; }
    void endPlayback() override { ++timesEnded; }
    [[nodiscard]] std::optional<QString> contextID() const override { return identifier; }
};

class ScriptedPicker : public RoutePicker {
  public:
    std::optional<QString> bound;
    int timesBound = 0;
    int timesShown = 0;
    bool prefersVideo = false;

    [[nodiscard]] std::optional<QString> outputContextID() const override { return bound; }
    void setOutputContextID(const QString& contextID) override {
        bound = contextID;
        ++timesBound;
    }
    void setPrioritizesVideoDevices(bool on) override { prefersVideo = on; }
    void showRoutePickingControls(OutputContext& /*context*/) override { ++timesShown; }
};

class ScriptedPower : public PowerManager {
  public:
    bool refuses = false;
    QMap<Assertion, QString> held;
    QList<Assertion> released;

    [[nodiscard]] std::optional<Assertion> preventIdleSleep(const QString& reason) override {
        if (refuses) return std::nullopt;
        held.insert(++last_, reason);
        return last_;
    }
    void release(Assertion assertion) override {
        held.remove(assertion);
        released.append(assertion);
    }

  private:
    Assertion last_ = 0;
};

}  // namespace velmora::test
