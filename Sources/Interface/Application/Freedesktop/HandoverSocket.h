#pragma once

#include "Interface/Application/Freedesktop/LaunchRequest.h"

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <expected>

class QLocalSocket;

namespace velmora {

/// How later starts reach the one process where there is no session bus: a socket that only the user can
/// open. Main thread only.
class HandoverSocket : public QObject {
    Q_OBJECT

  public:
    explicit HandoverSocket(QString path, QObject* parent = nullptr);

    /// In the user's runtime folder.
    [[nodiscard]] static QString defaultPath();

    enum class Outcome {
        listening,   ///< nobody was there: this is the one process now
        handedOver,  ///< to the one that is there
    };
    /// Gives the request to the process that listens, or else listens. Waits for the answer. Fails with the
    /// reason in plain words.
    [[nodiscard]] std::expected<Outcome, QString> handOverOrListen(const LaunchRequest& request);

  Q_SIGNALS:
    /// Comes from the event loop.
    void requested(const velmora::LaunchRequest& request);

  private:
    void accept();
    void read(QLocalSocket& socket);

    QString path_;
    QLocalServer server_;
};

}  // namespace velmora
