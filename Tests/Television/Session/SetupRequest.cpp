#include "Television/Session/SetupRequest.h"

#include "Television/RequestRules.h"

#include <QList>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Timing = SessionSetup::Timing;

bool isInteger(const QVariant& value) {
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::ULongLong;
}

/// Reads a dictionary and keeps the first thing that is wrong with it.
class Reader {
  public:
    explicit Reader(QVariantMap body) : body_(std::move(body)) {}

    QString text(const QString& key) {
        const QVariant value = body_.value(key);
        require(value.typeId() == QMetaType::QString && !value.toString().isEmpty(), key);
        return value.toString();
    }
    void is(const QString& key, const QString& text) { require(body_.value(key) == text, key); }
    void is(const QString& key, bool value) {
        require(body_.value(key).typeId() == QMetaType::Bool && body_.value(key).toBool() == value, key);
    }
    void is(const QString& key, int value) {
        require(isInteger(body_.value(key)) && body_.value(key).toInt() == value, key);
    }
    void lacks(const QString& key) { require(!body_.contains(key), key); }
    void isUuid(const QString& key) { require(isUpperUuid(text(key)), key); }
    quint64 integer(const QString& key) {
        require(isInteger(body_.value(key)), key);
        return body_.value(key).toULongLong();
    }
    void require(bool isRight, const QString& key) {
        if (!isRight && wrong_.isEmpty()) wrong_ = u"SETUP with a wrong “%1”"_s.arg(key);
    }
    [[nodiscard]] const QString& wrong() const { return wrong_; }
    [[nodiscard]] const QVariantMap& body() const { return body_; }

  private:
    QVariantMap body_;
    QString wrong_;
};

void readPeers(Reader& reader, const QHostAddress& sender) {
    const QVariantMap peer = reader.body().value(u"timingPeerInfo"_s).toMap();
    Reader inner(peer);
    inner.isUuid(u"ID"_s);
    inner.is(u"DeviceType"_s, 0);
    inner.is(u"SupportsClockPortMatchingOverride"_s, true);
    QString address = sender.toString();
    inner.require(peer.value(u"Addresses"_s).toList().contains(address), u"Addresses"_s);
    reader.require(inner.wrong().isEmpty(), u"timingPeerInfo"_s);
    reader.require(reader.body().value(u"timingPeerList"_s).toList() == QVariantList{peer},
                   u"timingPeerList"_s);
    reader.is(u"sessionCorrelationUUID"_s, peer.value(u"ID"_s).toString());
}

Timing readTiming(Reader& reader, const QHostAddress& sender, quint16& port) {
    const QString timing = reader.text(u"timingProtocol"_s);
    reader.is(u"statsCollectionEnabled"_s, false);
    if (timing == "PTP"_L1) {
        reader.lacks(u"timingPort"_s);
        reader.is(u"isMultiSelectAirPlay"_s, false);
        reader.is(u"updateSessionRequest"_s, false);
        readPeers(reader, sender);
        return Timing::ptp;
    }
    reader.lacks(u"timingPeerInfo"_s);
    reader.lacks(u"timingPeerList"_s);
    reader.is(u"isMultiSelectAirPlay"_s, true);
    reader.is(u"groupContainsGroupLeader"_s, false);
    reader.is(u"senderSupportsRelay"_s, false);
    if (timing == "None"_L1) return Timing::none;
    reader.is(u"timingProtocol"_s, u"NTP"_s);
    port = quint16(reader.integer(u"timingPort"_s));
    reader.require(port != 0, u"timingPort"_s);
    return Timing::ntp;
}

}  // namespace

std::expected<SessionSetup, QString> readSessionSetup(const QVariantMap& body, const QHostAddress& sender) {
    Reader reader(body);
    SessionSetup setup;
    for (const QString& key : {u"deviceID"_s, u"model"_s, u"name"_s, u"osName"_s, u"osVersion"_s,
                               u"osBuildVersion"_s, u"sourceVersion"_s})
        reader.text(key);
    reader.is(u"macAddress"_s, reader.text(u"deviceID"_s));
    reader.isUuid(u"sessionUUID"_s);
    setup.remoteOnly = body.contains(u"isRemoteControlOnly"_s);
    if (setup.remoteOnly) {
        reader.is(u"isRemoteControlOnly"_s, true);
        reader.is(u"timingProtocol"_s, u"None"_s);
        reader.lacks(u"timingPort"_s);
    } else {
        setup.timing = readTiming(reader, sender, setup.timingPort);
    }
    if (!reader.wrong().isEmpty()) return std::unexpected(reader.wrong());
    return setup;
}

std::expected<StreamSetup, QString> readStreamSetup(const QVariantMap& body) {
    const QVariantList streams = body.value(u"streams"_s).toList();
    if (streams.size() != 1 || body.size() != 1) return std::unexpected(u"SETUP of not one stream"_s);
    Reader reader(streams[0].toMap());
    StreamSetup setup;
    reader.is(u"type"_s, 130);
    reader.isUuid(u"clientUUID"_s);
    setup.remote = reader.integer(u"controlType"_s) == 2;
    qsizetype keys = 5;
    if (setup.remote) {
        reader.isUuid(u"channelID"_s);
        reader.is(u"clientTypeUUID"_s, u"1910A70F-DBC0-4242-AF95-115DB30604E1"_s);
        reader.is(u"wantsDedicatedSocket"_s, true);
        setup.seed = reader.integer(u"seed"_s);
        keys += 2;
    } else {
        reader.is(u"controlType"_s, 1);
        reader.is(u"clientTypeUUID"_s, u"A6B27562-B43A-4F2D-B75F-82391E250194"_s);
        reader.require(reader.text(u"channelID"_s).endsWith("-RCS-1"_L1), u"channelID"_s);
    }
    reader.require(reader.body().size() == keys, u"key too many"_s);
    if (!reader.wrong().isEmpty()) return std::unexpected(reader.wrong());
    return setup;
}

}  // namespace velmora::test
