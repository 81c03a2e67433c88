#include "Sender/Session/SessionRequests.h"

#include "Sender/Plist.h"
#include "Sender/Session/SessionMessages.h"

#include <QRandomGenerator>

namespace velmora {

SessionRequests::SessionRequests(const QHostAddress& local, QByteArray userAgent)
    : userAgent_(std::move(userAgent)) {
    auto& random = *QRandomGenerator::system();
    const QByteArray host = SessionMessages::plainText(local).toLatin1();
    const bool isIPv6 = local.protocol() == QAbstractSocket::IPv6Protocol;
    uri_ = "rtsp://" + (isIPv6 ? "[" + host + "]" : host) + "/" + QByteArray::number(random.generate());
    instance_ = QByteArray::number(random.generate64(), 16).rightJustified(16, '0').toUpper();
    activeRemote_ = QByteArray::number(random.generate());
}

Request SessionRequests::rtsp(const QByteArray& method, const QByteArray& target) {
    Request request = http(method, target);
    request.version = "RTSP/1.0";
    return request;
}

Request SessionRequests::http(const QByteArray& method, const QByteArray& target) {
    Request request;
    request.method = method;
    request.target = target;
    request.headers = {{"CSeq", QByteArray::number(sequence_++)},
                       {"DACP-ID", instance_},
                       {"Active-Remote", activeRemote_},
                       {"Client-Instance", instance_},
                       {"User-Agent", userAgent_},
                       {"X-Apple-Client-Name", "Velmora"}};
    return request;
}

Request SessionRequests::with(Request request, const QVariantMap& body) {
    request.headers.append("Content-Type", "application/x-apple-binary-plist");
    request.body = Plist::encodeBinary(body);
    return request;
}

}  // namespace velmora
