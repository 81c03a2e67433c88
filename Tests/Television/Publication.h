#pragma once

#include "Television/Options.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace velmora::test {

/// A television's announcement on the network, by the Avahi daemon; withdrawn on destruction, and by the
/// daemon itself when this program ends in any other way.
class Publication : public QObject {
    Q_OBJECT

  public:
    /// Waits for the daemon's answers. Whether they were kind is `said`.
    Publication(const TelevisionOptions& options, quint16 port, QObject* parent = nullptr);
    ~Publication() override;

    /// Why nothing is announced; empty if it is.
    [[nodiscard]] const QString& failure() const { return failure_; }

  Q_SIGNALS:
    void said(const QString& line);

  private Q_SLOTS:
    void stateChanged(int state, const QString& error);

  private:
    [[nodiscard]] QString publish(const TelevisionOptions& options, quint16 port);
    [[nodiscard]] QDBusMessage call(const QString& path, const QString& type, const QString& method,
                                    const QVariantList& arguments = {}) const;

    QString busName_;
    QDBusConnection bus_;
    QString group_;  // the object's path
    QString failure_;
};

}  // namespace velmora::test
