#include "Television/Responses.h"

#include "Sender/Plist.h"

namespace velmora::test {

namespace {

QByteArray reasonOf(int status) {
    switch (status) {
        case 101:
            return "Switching Protocols";
        case 200:
            return "OK";
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 405:
            return "Method Not Allowed";
        case 453:
            return "Not Enough Bandwidth";
        case 455:
            return "Method Not Valid In This State";
        case 470:
            return "Connection Authorization Required";
        case 500:
            return "Internal Server Error";
        default:
            return "Not Implemented";
    }
}

Response withBody(const char* type, const QByteArray& body) {
    Response response;
    response.headers.append("Content-Type", type);
    response.body = body;
    return response;
}

}  // namespace

Response response(int status) {
    Response response;
    response.status = status;
    response.reason = reasonOf(status);
    return response;
}

Response xmlResponse(const QVariantMap& body) {
    return withBody("text/x-apple-plist+xml", Plist::encodeXml(body));
}

Response binaryResponse(const QVariantMap& body) {
    return withBody("application/x-apple-binary-plist", Plist::encodeBinary(body));
}

}  // namespace velmora::test
