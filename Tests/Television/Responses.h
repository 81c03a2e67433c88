#pragma once

#include "Sender/Message.h"
#include "Sender/Plist.h"

namespace velmora::test {

[[nodiscard]] inline Response response(int status) {
    return {.status = status, .reason = status < 300 ? "OK" : "No", .headers = {}, .body = {}};
}

[[nodiscard]] inline Response withBody(const char* type, const QByteArray& body) {
    return {.headers = {{"Content-Type", type}}, .body = body};
}

[[nodiscard]] inline Response xmlResponse(const QVariantMap& body) {
    return withBody("text/x-apple-plist+xml", Plist::encodeXml(body));
}

[[nodiscard]] inline Response binaryResponse(const QVariantMap& body) {
    return withBody("application/x-apple-binary-plist", Plist::encodeBinary(body));
}

}  // namespace velmora::test
