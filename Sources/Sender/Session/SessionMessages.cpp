#include "Sender/Session/SessionMessages.h"

#include <QCryptographicHash>
#include <QSysInfo>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Receivers know what to expect of a phone of that kind; of a name that they never heard they may not.
constexpr auto likeModel = "iPhone14,3"_L1;
constexpr auto likeSystem = "iPhone OS"_L1;
constexpr auto likeSystemVersion = "16.5"_L1;
constexpr auto likeSystemBuild = "20F66"_L1;

constexpr int commandStreamType = 130;
constexpr auto queueClientType = "A6B27562-B43A-4F2D-B75F-82391E250194"_L1;
constexpr auto remoteClientType = "1910A70F-DBC0-4242-AF95-115DB30604E1"_L1;

// The computer's own number never leaves it. Without one, each start is another sender, and that is all.
QByteArray installationDigest() {
    static const QByteArray digest = [] {
        QByteArray seed = QSysInfo::machineUniqueId();
        if (seed.isEmpty()) seed = QUuid::createUuid().toRfc4122();
        return QCryptographicHash::hash("velmora sender " + seed, QCryptographicHash::Sha256);
    }();
    return digest;
}

QVariantMap peerOf(const SessionMessages::Setup& setup) {
    return {{u"ID"_s, setup.peer},
            {u"Addresses"_s, QVariantList{SessionMessages::plainText(setup.local)}},
            {u"DeviceType"_s, 0},
            {u"SupportsClockPortMatchingOverride"_s, true}};
}

}  // namespace

SenderIdentity SenderIdentity::ofThisComputer() {
    const QByteArray digest = installationDigest();
    QByteArray address = digest.first(6);
    address[0] = static_cast<char>((address[0] & 0xfc) | 0x02);  // locally administered, one station
    return {.address = QString::fromLatin1(address.toHex(':').toUpper()),
            .identifier = QUuid::fromRfc4122(digest.sliced(6, 16)).toString(QUuid::WithoutBraces).toUpper(),
            .name = u"Velmora"_s};
}

QString newIdentifier() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

namespace SessionMessages {

QVariantMap setup(const Setup& setup) {
    QVariantMap body{{u"deviceID"_s, setup.sender.address},
                     {u"macAddress"_s, setup.sender.address},
                     {u"sessionUUID"_s, setup.session},
                     {u"name"_s, setup.sender.name},
                     {u"model"_s, likeModel},
                     {u"osName"_s, likeSystem},
                     {u"osVersion"_s, likeSystemVersion},
                     {u"osBuildVersion"_s, likeSystemBuild},
                     {u"sourceVersion"_s, setup.sourceVersion}};
    if (setup.timing == Timing::none) {
        body.insert(u"isRemoteControlOnly"_s, true);
        body.insert(u"timingProtocol"_s, u"None"_s);
        return body;
    }
    body.insert(u"sessionCorrelationUUID"_s, setup.peer);
    body.insert(u"statsCollectionEnabled"_s, false);
    if (setup.timing == Timing::precise) {
        body.insert(u"timingProtocol"_s, u"PTP"_s);
        body.insert(u"timingPeerInfo"_s, peerOf(setup));
        body.insert(u"timingPeerList"_s, QVariantList{peerOf(setup)});
        body.insert(u"updateSessionRequest"_s, false);
        body.insert(u"isMultiSelectAirPlay"_s, false);
    } else {
        body.insert(u"timingProtocol"_s, u"NTP"_s);
        body.insert(u"timingPort"_s, int(setup.timingPort));
        body.insert(u"isMultiSelectAirPlay"_s, true);
        body.insert(u"groupContainsGroupLeader"_s, false);
        body.insert(u"senderSupportsRelay"_s, false);
    }
    return body;
}

QVariantMap queueStream(const QString& channel) {
    return {{u"type"_s, commandStreamType},
            {u"controlType"_s, 1},
            {u"clientUUID"_s, newIdentifier()},
            {u"clientTypeUUID"_s, queueClientType},
            {u"channelID"_s, QString(channel + u"-RCS-1"_s)}};
}

QVariantMap remoteStream(quint64 seed) {
    return {{u"type"_s, commandStreamType},
            {u"controlType"_s, 2},
            {u"channelID"_s, newIdentifier()},
            {u"clientUUID"_s, newIdentifier()},
            {u"clientTypeUUID"_s, remoteClientType},
            {u"wantsDedicatedSocket"_s, true},
            {u"seed"_s, seed}};
}

QVariantMap streams(const QVariantMap& stream) {
    return {{u"streams"_s, QVariantList{stream}}};
}

QVariantMap firstStream(const QVariant& answer) {
    const QVariantList list = answer.toMap().value(u"streams"_s).toList();
    return list.isEmpty() ? QVariantMap() : list.first().toMap();
}

QString plainText(const QHostAddress& address) {
    return address.toString().section(u'%', 0, 0);
}

QVariantMap wrapped(const QByteArray& content) {
    return {{u"params"_s, QVariantMap{{u"data"_s, content}}}};
}

std::optional<QByteArray> unwrapped(const QVariantMap& envelope) {
    const QVariant content = envelope.value(u"params"_s).toMap().value(u"data"_s);
    if (content.typeId() != QMetaType::QByteArray) return std::nullopt;
    return content.toByteArray();
}

}  // namespace SessionMessages

}  // namespace velmora
