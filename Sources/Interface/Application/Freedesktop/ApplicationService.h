#pragma once

#include "Interface/Application/Freedesktop/LaunchRequest.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <expected>

namespace velmora {

/// The application on the session bus, as `org.freedesktop.Application`: the desktop and later starts reach
/// the one process through it. Main thread only.
class ApplicationService : public QObject {
    Q_OBJECT

  public:
    explicit ApplicationService(QDBusConnection bus, QObject* parent = nullptr);

    /// Takes the application's name. False when another process has it.
    [[nodiscard]] bool claim();

    enum class HandoverError { nobodyThere, noAnswer };
    /// Gives the request to the process that has the name, and waits for its answer.
    [[nodiscard]] std::expected<void, HandoverError> handOver(const LaunchRequest& request);

  Q_SIGNALS:
    /// Comes from the event loop, after the one who asked has its answer.
    void requested(const velmora::LaunchRequest& request);

  private:
    QDBusConnection bus_;
};

/// What the bus sees of it.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    explicit ApplicationAdaptor(ApplicationService& service)
        : QDBusAbstractAdaptor(&service), service_(service) {}

  public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): named by the desktop's standard
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameters, const QVariantMap& platformData);
    // NOLINTEND(readability-identifier-naming)

  private:
    void pass(LaunchRequest request, const QVariantMap& platformData);

    ApplicationService& service_;
};

}  // namespace velmora
