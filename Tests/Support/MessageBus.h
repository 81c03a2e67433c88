#pragma once

#include "Support/ChildProcess.h"

#include <QProcessEnvironment>
#include <QString>

namespace velmora::test {

/// A session bus of a test's own. What it starts on demand lives in `environment`.
class MessageBus {
  public:
    explicit MessageBus(const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
        daemon_.setProcessEnvironment(environment);
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                       QStringLiteral("--print-address")});
        if (daemon_.waitForReadyRead(5000)) address_ = QString::fromUtf8(daemon_.readLine().trimmed());
    }

    /// Empty where there is no dbus-daemon.
    [[nodiscard]] const QString& address() const { return address_; }

  private:
    ChildProcess daemon_;
    QString address_;
};

}  // namespace velmora::test
