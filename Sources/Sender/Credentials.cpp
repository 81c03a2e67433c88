#include "Sender/Credentials.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype passwordLengthLimit = 256;

QString hex(QByteArrayView bytes) {
    return QString::fromLatin1(bytes.toByteArray().toHex());
}

/// A key of 32 bytes; nothing if it is none.
std::optional<QByteArray> keyIn(const QJsonObject& object, QLatin1StringView name) {
    QByteArray key = QByteArray::fromHex(object[name].toString().toLatin1());
    if (key.size() != Crypto::keySize) return std::nullopt;
    return key;
}

std::optional<HapCredentials> pairingFrom(const QJsonObject& object) {
    const QByteArray ourName = object["name"_L1].toString().toUtf8();
    const QByteArray theirName = object["theirName"_L1].toString().toUtf8();
    const auto seed = keyIn(object, "seed"_L1);
    const auto theirKey = keyIn(object, "theirKey"_L1);
    const auto isName = [](const QByteArray& name) {
        return !name.isEmpty() && name.size() <= HapMessages::maximumIdentifierSize;
    };
    if (!seed || !theirKey || !isName(ourName) || !isName(theirName)) return std::nullopt;
    return HapCredentials{{ourName, Secret(QByteArrayView(*seed))}, {theirName, *theirKey}};
}

std::optional<LegacyCredentials> legacyPairingFrom(const QJsonObject& object) {
    const QByteArray user = object["name"_L1].toString().toLatin1();
    const auto seed = keyIn(object, "seed"_L1);
    const auto theirKey = keyIn(object, "theirKey"_L1);
    constexpr qsizetype userSize = 16;
    if (!seed || !theirKey || user.size() != userSize) return std::nullopt;
    return LegacyCredentials{{user, Secret(QByteArrayView(*seed))}, *theirKey};
}

}  // namespace

QByteArray Credentials::encoded() const {
    QJsonObject object;
    if (pairing)
        object["pairing"_L1] = QJsonObject{{"name"_L1, QString::fromUtf8(pairing->ours.identifier)},
                                           {"seed"_L1, hex(pairing->ours.seed)},
                                           {"theirName"_L1, QString::fromUtf8(pairing->theirs.identifier)},
                                           {"theirKey"_L1, hex(pairing->theirs.publicKey)}};
    if (legacyPairing)
        object["legacyPairing"_L1] = QJsonObject{{"name"_L1, QString::fromLatin1(legacyPairing->ours.user)},
                                                 {"seed"_L1, hex(legacyPairing->ours.seed)},
                                                 {"theirKey"_L1, hex(legacyPairing->theirPublicKey)}};
    if (!password.isEmpty()) object["password"_L1] = password;
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Credentials Credentials::decoded(const QByteArray& text) {
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    QString password = object["password"_L1].toString();
    if (password.size() > passwordLengthLimit) password.clear();
    return {pairingFrom(object["pairing"_L1].toObject()),
            legacyPairingFrom(object["legacyPairing"_L1].toObject()), password};
}

}  // namespace velmora
