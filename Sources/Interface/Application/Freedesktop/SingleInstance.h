#pragma once

#include "Interface/Application/Freedesktop/ApplicationService.h"
#include "Interface/Application/Freedesktop/HandoverSocket.h"

#include <QDBusConnection>
#include <QObject>

#include <expected>

namespace velmora {

/// One process per user: over the session bus, or a socket where there is no bus. Main thread only.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    SingleInstance(QDBusConnection bus, const QString& socketPath, QObject* parent = nullptr);

    enum class Role {
        first,   ///< this is the one; `requested` tells of later starts
        second,  ///< the request was handed over, and this process is done
    };
    /// Blocks for as long as the other process takes to answer. Fails with the reason in plain words.
    [[nodiscard]] std::expected<Role, QString> start(const LaunchRequest& request);

  Q_SIGNALS:
    void requested(const velmora::LaunchRequest& request);

  private:
    [[nodiscard]] std::expected<Role, QString> startOnBus(const LaunchRequest& request);

    QDBusConnection bus_;
    ApplicationService service_;
    HandoverSocket socket_;
};

}  // namespace velmora
