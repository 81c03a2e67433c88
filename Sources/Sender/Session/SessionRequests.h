#pragma once

#include "Sender/Message.h"

#include <QHostAddress>
#include <QVariantMap>

namespace velmora {

/// Makes the requests of one session: the headers that all of them carry, and the numbers that stay the same
/// from the first to the last.
class SessionRequests {
  public:
    /// `local`: this computer's end of the connection, which the session is named after.
    SessionRequests(const QHostAddress& local, QByteArray userAgent);

    /// A verb about the session as a whole.
    [[nodiscard]] Request about(const QByteArray& method) { return rtsp(method, uri_); }
    [[nodiscard]] Request rtsp(const QByteArray& method, const QByteArray& target);
    [[nodiscard]] Request http(const QByteArray& method, const QByteArray& target);

    /// The request with this property list as its body.
    [[nodiscard]] static Request with(Request request, const QVariantMap& body);

  private:
    QByteArray uri_;
    QByteArray instance_;
    QByteArray activeRemote_;
    QByteArray userAgent_;
    int sequence_ = 0;
};

}  // namespace velmora
