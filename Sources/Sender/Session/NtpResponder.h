#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHostAddress>
#include <QObject>
#include <QUdpSocket>

#include <chrono>
#include <memory>
#include <optional>

namespace velmora {

/// Tells a receiver what time it is here: with this kind of session it asks every few seconds, and ends the
/// session when nobody answers. Main thread only.
class NtpResponder : public QObject {
    Q_OBJECT

  public:
    using Time = std::chrono::system_clock::time_point;

    /// Listens on `local`; nothing when no port is to be had. Questions from elsewhere than `receiver` are
    /// not answered.
    [[nodiscard]] static std::unique_ptr<NtpResponder> listen(const QHostAddress& local,
                                                              const QHostAddress& receiver);

    [[nodiscard]] quint16 port() const { return socket_.localPort(); }

    /// The answer to a question that came in at `received` and is answered at `sent`; nothing when it is no
    /// question.
    [[nodiscard]] static std::optional<QByteArray> answer(QByteArrayView question, Time received, Time sent);

  private:
    explicit NtpResponder(const QHostAddress& receiver);
    void respond();

    QUdpSocket socket_;
    QHostAddress receiver_;
};

}  // namespace velmora
