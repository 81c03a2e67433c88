#include "Television/RequestRules.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr qsizetype uuidLength = 36;

/// Verbs whose target is the session.
bool isOfSession(const QByteArray& method) {
    return method == "SETUP" || method == "RECORD" || method == "TEARDOWN";
}

/// The one protocol in which a request is understood; empty: either.
QByteArray protocolOf(const Request& request) {
    if (isOfSession(request.method) || request.path() == "/feedback") return "RTSP/1.0";
    const QList<QByteArray> web{"/command", "/play", "/playback-info"};
    return web.contains(request.path()) ? "HTTP/1.1" : QByteArray();
}

bool isPairing(const Request& request) {
    return request.target.startsWith("/pair-");
}

bool matches(const QString& pattern, const QByteArray& text) {
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern))
        .match(QString::fromLatin1(text))
        .hasMatch();
}

bool isNumber(const QByteArray& text) {
    bool isNumber = false;
    text.toUInt(&isNumber);
    return isNumber && matches(u"[0-9]+"_s, text);
}

}  // namespace

QString RequestRules::complaint(const Request& request) {
    const Headers& headers = request.headers;
    if (std::ranges::any_of(headers, [](const auto& header) { return header.second.isEmpty(); }))
        return u"a header without a value"_s;
    if (headers.contains("Expect")) return u"an expectation"_s;
    const bool carriesBody = request.method == "POST" || request.method == "PUT";
    if (carriesBody && !headers.contains("Content-Length")) return u"no Content-Length"_s;
    QString wrong = numberComplaint(request);
    if (wrong.isEmpty()) wrong = sealed_ ? sealedComplaint(request) : plainComplaint(request);
    const QByteArray session = headers.value("X-Apple-Session-ID");
    if (wrong.isEmpty() && !session.isEmpty() && !session_.isEmpty() && session != session_)
        return u"another session on the same connection"_s;
    if (!session.isEmpty()) session_ = session;
    return wrong;
}

QString RequestRules::plainComplaint(const Request& request) const {
    const Headers& headers = request.headers;
    const QByteArray session = headers.value("X-Apple-Session-ID");
    if (isPairing(request) || request.version == "RTSP/1.0") return {};
    if (headers.contains("Host") && session.isEmpty()) return u"a Host without a session"_s;
    if (request.target == "/server-info" || request.target == "/info") return {};
    return session.size() == uuidLength ? QString() : u"no session"_s;
}

QString RequestRules::sealedComplaint(const Request& request) {
    const QByteArray protocol = protocolOf(request);
    if (!protocol.isEmpty() && request.version != protocol)
        return u"in another protocol than "_s + QLatin1StringView(protocol);
    if (!request.headers.value("User-Agent").startsWith("AirPlay/"))
        return u"a User-Agent that is not AirPlay"_s;
    const QByteArray type = request.headers.value("Content-Type");
    if (!request.body.isEmpty() && type != "application/x-apple-binary-plist")
        return u"a body of type “%1”"_s.arg(QLatin1StringView(type));
    if (request.version != "RTSP/1.0" && request.path() != "/command") return {};
    const QString wrong = identityComplaint(request.headers);
    return wrong.isEmpty() ? targetComplaint(request) : wrong;
}

/// The same remote control throughout.
QString RequestRules::identityComplaint(const Headers& headers) {
    const QByteArray identifier = headers.value("DACP-ID");
    if (!matches(u"[0-9A-F]{16}"_s, identifier)) return u"no DACP-ID of 16 hexadecimal digits"_s;
    if (headers.value("Client-Instance") != identifier) return u"Client-Instance is not the DACP-ID"_s;
    const QByteArray remote = headers.value("Active-Remote");
    if (!isNumber(remote)) return u"no Active-Remote of 32 bits"_s;
    if (!remote_.isEmpty() && remote_ != identifier + remote) return u"as another remote control"_s;
    remote_ = identifier + remote;
    return {};
}

/// The session is named after the sender's address and a number of its own choice.
QString RequestRules::targetComplaint(const Request& request) {
    if (!isOfSession(request.method)) return {};
    if (!target_.isEmpty()) return request.target == target_ ? QString() : u"another session's name"_s;
    QString host = sender_.toString().section('%'_L1, 0, 0);
    if (sender_.protocol() == QAbstractSocket::IPv6Protocol) host = '['_L1 + host + ']'_L1;
    const QByteArray start = "rtsp://" + host.toLatin1() + '/';
    if (!request.target.startsWith(start) || !isNumber(request.target.mid(start.size())))
        return u"the session is not named rtsp://%1/ and a number"_s.arg(host);
    target_ = request.target;
    return {};
}

QString RequestRules::numberComplaint(const Request& request) {
    const bool isWeb = request.version != "RTSP/1.0";
    const QByteArray text = request.headers.value("CSeq");
    if (text.isEmpty()) return isWeb && !(sealed_ && request.path() == "/command") ? QString() : u"no CSeq"_s;
    if (!sealed_ && isWeb) return u"CSeq in HTTP"_s;
    if (!isNumber(text)) return u"a CSeq that is no number"_s;
    const quint32 number = text.toUInt();
    // What waited for an answer that never came is not sent before a farewell.
    const bool isFarewell = request.method == "TEARDOWN" && number_ && number > *number_;
    const bool follows = !number_ || number == *number_ + 1 || isFarewell;
    number_ = number;
    return follows ? QString() : u"a CSeq that does not follow the last one"_s;
}

bool isUpperUuid(const QString& text) {
    return matches(u"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"_s, text.toLatin1());
}

}  // namespace velmora::test
