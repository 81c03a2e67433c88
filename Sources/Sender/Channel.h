#pragma once

#include "Sender/ConnectionError.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

namespace velmora {

/// Bytes to and from one receiver: a socket, or an encrypting channel around another one. Main thread only.
///
/// Destroying a channel closes it; not from inside its own signals, though: there, `close` it.
class Channel : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// Hands the bytes on at once; nothing happens on a channel that is closed.
    virtual void write(const QByteArray& bytes) = 0;
    /// For good, without a signal. What was written is on its way and still arrives.
    virtual void close() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;
    /// The address of this computer that the receiver sees.
    [[nodiscard]] virtual QHostAddress localAddress() const = 0;
    [[nodiscard]] virtual QHostAddress peerAddress() const = 0;

  Q_SIGNALS:
    void received(const QByteArray& bytes);
    /// Once, when the channel ends by itself.
    void closed(const velmora::ConnectionError& error);
};

}  // namespace velmora
