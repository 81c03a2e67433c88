#include "Television/PasswordGuard.h"

#include "Sender/Pairing/Crypto.h"
#include "Television/Responses.h"

#include <QCryptographicHash>
#include <QMap>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

const QByteArray realm = "AirPlay";

QByteArray md5(const QByteArray& text) {
    return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
}

/// Split as the crudest receiver does it: at every comma and every equals sign. Empty if that does not give
/// pairs.
QMap<QByteArray, QByteArray> fieldsOf(QByteArray header) {
    if (!header.startsWith("Digest ")) return {};
    QMap<QByteArray, QByteArray> fields;
    for (const QByteArray& field : header.mid(7).split(',')) {
        const QList<QByteArray> pair = field.trimmed().split('=');
        if (pair.size() != 2) return {};
        fields.insert(pair[0], QByteArray(pair[1]).replace('"', ""));
    }
    return fields;
}

bool isOpen(const QByteArray& path) {
    return path == "/server-info" || path == "/reverse" || path == "/info" || path == "/feedback";
}

}  // namespace

std::optional<Response> PasswordGuard::challenge(const Request& request, bool sealed) {
    if (context_.options.password.isEmpty() || isOpen(request.path())) return std::nullopt;
    const bool answers = request.headers.contains("Authorization");
    if (passed_ && !answers && !sealed) return std::nullopt;
    if (passed_ && !answers) context_.complain(u"a request of the session without the password's proof"_s);
    if (!answers || !isRight(request)) return freshChallenge();
    passed_ = true;
    return std::nullopt;
}

bool PasswordGuard::isRight(const Request& request) const {
    const auto fields = fieldsOf(request.headers.value("Authorization"));
    const QByteArray uri = fields.value("uri");
    QString wrong;
    if (fields.isEmpty()) wrong = u"a proof of the password that cannot be read"_s;
    if (uri != request.path()) wrong = u"a proof of the password for another target"_s;
    if (fields.contains("qop") || fields.contains("cnonce")) wrong = u"a quality that was not offered"_s;
    if (fields.value("realm") != realm) wrong = u"another realm"_s;
    if (!wrong.isEmpty()) {
        context_.complain(wrong);
        return false;
    }
    const QByteArray login =
        md5(fields.value("username") + ':' + realm + ':' + context_.options.password.toUtf8());
    const QByteArray asked = md5(request.method + ':' + uri);
    return !nonce_.isEmpty() && fields.value("nonce") == nonce_ &&
           fields.value("response") == md5(login + ':' + nonce_ + ':' + asked);
}

Response PasswordGuard::freshChallenge() {
    passed_ = false;
    nonce_ = Crypto::random(16).toByteArray().toHex();
    Response refusal = response(401);
    refusal.headers.append("WWW-Authenticate", "Digest realm=\"" + realm + "\", nonce=\"" + nonce_ + '"');
    return refusal;
}

}  // namespace velmora::test
