#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>

#include <functional>

namespace velmora {

/// Messages that the desktop shows outside the windows (`org.freedesktop.Notifications`). Main thread only;
/// never waits. Where nothing shows notifications, nothing happens.
class Notifications : public QObject {
    Q_OBJECT

  public:
    explicit Notifications(QDBusConnection bus, QObject* parent = nullptr);

    /// Called when the user presses the message. The token lets a window take the focus; it may be empty.
    using Pressed = std::function<void(const QString& activationToken)>;
    void show(const QString& summary, const QString& body, Pressed pressed);

  private Q_SLOTS:
    void invoked(uint id, const QString& action);
    void tokenGiven(uint id, const QString& token);
    void closed(uint id, uint reason);

  private:
    struct Shown {
        Pressed pressed;
        QString token{};
    };

    QDBusConnection bus_;
    QHash<uint, Shown> shown_;
};

}  // namespace velmora
