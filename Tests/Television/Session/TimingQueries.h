#pragma once

#include "Television/Context.h"

#include <QHostAddress>
#include <QObject>
#include <QUdpSocket>

namespace velmora::test {

/// Asks a sender for the time, again and again, and checks what it says.
class TimingQueries : public QObject {
    Q_OBJECT

  public:
    TimingQueries(Context& context, const QHostAddress& sender, quint16 port, QObject* parent = nullptr);

    [[nodiscard]] quint16 port() const { return socket_.localPort(); }

  Q_SIGNALS:
    /// The first right answer.
    void answered();
    /// Several in a row were not answered.
    void missed();

  private:
    void ask();
    void receive();
    [[nodiscard]] QString complaint(const QByteArray& answer) const;

    Context& context_;
    QHostAddress sender_;
    quint16 port_;
    QUdpSocket socket_;
    QByteArray question_;
    int asked_ = 0;
    int open_ = 0;  // questions since the last answer
    bool known_ = false;
    Clock::Timer asking_;
};

}  // namespace velmora::test
