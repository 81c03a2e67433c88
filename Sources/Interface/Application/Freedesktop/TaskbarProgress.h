#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QObject>

#include <optional>

namespace velmora {

/// The progress bar on the application's icon in docks and task bars, for all preparations together
/// (`com.canonical.Unity.LauncherEntry`). Main thread only; nobody need be listening.
class TaskbarProgress : public QObject {
    Q_OBJECT

  public:
    explicit TaskbarProgress(QDBusConnection bus, QObject* parent = nullptr);

    /// How far the preparation of a window is, 0…1; absent when it prepares nothing, or nobody knows.
    void show(const QObject* window, std::optional<double> progress);

    /// What the icon shows: the average; absent when nothing is under way.
    [[nodiscard]] std::optional<double> progress() const;

  private:
    void send();

    QDBusConnection bus_;
    QMap<const QObject*, double> windows_;
    std::optional<int> sentPercent_;
};

}  // namespace velmora
