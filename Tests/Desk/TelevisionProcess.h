#pragma once

#include "Support/ChildProcess.h"

#include <QString>
#include <QStringList>

namespace velmora::test {

class Desk;

/// `velmora-television` on a free port of this computer.
class TelevisionProcess {
  public:
    /// `options` as its --help tells them. Waits until it listens; the port is 0 when it never does.
    explicit TelevisionProcess(const QString& name, const QStringList& options = {});

    [[nodiscard]] const QString& name() const { return name_; }
    [[nodiscard]] quint16 port() const { return port_; }
    [[nodiscard]] QString address() const { return QStringLiteral("127.0.0.1:%1").arg(port_); }

    /// Waits twenty seconds at most for a line that begins so, after those that earlier waits have seen.
    [[nodiscard]] bool says(const QString& beginning);
    /// What it said so far: "loading URL", "playing at 0:00:00 of 0:01:40", "stopped", "refused: …".
    [[nodiscard]] QStringList lines();

    /// The program on the desk knows it from before, and lists it under its name. Before the program starts.
    void rememberOn(const Desk& desk) const;

  private:
    void readMore();

    QString name_;
    ChildProcess process_;
    quint16 port_ = 0;
    QStringList lines_;
    qsizetype seen_ = 0;
};

}  // namespace velmora::test
