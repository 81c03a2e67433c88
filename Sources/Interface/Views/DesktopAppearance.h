#pragma once

#include "Interface/Views/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

namespace velmora {

/// Keeps an `Appearance` as the desktop's settings are: dark or light, contrast, animations, size of text.
/// Without a settings portal it goes by the palette. Main thread only; waits for nothing.
class DesktopAppearance : public QObject {
    Q_OBJECT

  public:
    explicit DesktopAppearance(Appearance& appearance,
                               const QDBusConnection& bus = QDBusConnection::sessionBus(),
                               QObject* parent = nullptr);

    bool eventFilter(QObject* object, QEvent* event) override;

  private Q_SLOTS:
    void noteChange(const QDBusMessage& message);

  private:
    void noteSetting(const QString& group, const QString& key, const QDBusVariant& value);
    void ask(const QString& group, const QString& key);
    void readApplication();

    Appearance& appearance_;
    QDBusConnection bus_;
    bool isToldScheme_ = false;
};

}  // namespace velmora
