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
struct Reader {
    QVariantMap body;
    QString wrong{};

    void require(bool isRight, const QString& key) {
        if (!isRight && wrong.isEmpty()) wrong = u"SETUP with a wrong “%1”"_s.arg(key);
    }
    QString text(const QString& key) {
        require(body.value(key).typeId() == QMetaType::QString && !body.value(key).toString().isEmpty(), key);
        return body.value(key).toString();
    }
    quint64 integer(const QString& key) {
        require(isInteger(body.value(key)), key);
        return body.value(key).toULongLong();
    }
    void isUuid(const QString& key) { require(isUpperUuid(text(key)), key); }
    /// Of the same type, too: receivers do not take a number for a boolean.
    void has(const QVariantMap& exactly) {
        for (const auto& [key, value] : exactly.asKeyValueRange()) {
            const bool isNumber = value.typeId() == QMetaType::Int && isInteger(body.value(key));
            require((isNumber || value.typeId() == body.value(key).typeId()) && value == body.value(key),
                    key);
        }
    }
    void lacks(const QStringList& keys) {
        for (const QString& key : keys) require(!body.contains(key), key);
    }
};

void readPeers(Reader& reader, const QHostAddress& sender) {
    const QVariantMap peer = reader.body.value(u"timingPeerInfo"_s).toMap();
    Reader inner{peer};
    inner.isUuid(u"ID"_s);
    inner.has({{u"DeviceType"_s, 0}, {u"SupportsClockPortMatchingOverride"_s, true}});
    inner.require(peer.value(u"Addresses"_s).toList().contains(sender.toString()), u"Addresses"_s);
    reader.require(inner.wrong.isEmpty(), u"timingPeerInfo"_s);
    reader.has(
        {{u"timingPeerList"_s, QVariantList{peer}}, {u"sessionCorrelationUUID"_s, peer.value(u"ID"_s)}});
}

Timing readTiming(Reader& reader, const QHostAddress& sender, quint16& port) {
    const QString timing = reader.text(u"timingProtocol"_s);
    const bool isPrecise = timing == "PTP"_L1;
    reader.has({{u"statsCollectionEnabled"_s, false}, {u"isMultiSelectAirPlay"_s, !isPrecise}});
    if (isPrecise) {
        reader.lacks({u"timingPort"_s});
        reader.has({{u"updateSessionRequest"_s, false}});
        readPeers(reader, sender);
        return Timing::ptp;
    }
    reader.lacks({u"timingPeerInfo"_s, u"timingPeerList"_s});
    reader.has({{u"groupContainsGroupLeader"_s, false}, {u"senderSupportsRelay"_s, false}});
    if (timing == "None"_L1) return Timing::none;
    reader.has({{u"timingProtocol"_s, u"NTP"_s}});
    port = quint16(reader.integer(u"timingPort"_s));
    reader.require(port != 0, u"timingPort"_s);
    return Timing::ntp;
}

}  // namespace

std::expected<SessionSetup, QString> readSessionSetup(const QVariantMap& body, const QHostAddress& sender) {
    Reader reader{body};
    SessionSetup setup;
    for (const char* key :
         {"deviceID", "model", "name", "osName", "osVersion", "osBuildVersion", "sourceVersion"})
        reader.text(QString::fromLatin1(key));
    reader.has({{u"macAddress"_s, reader.text(u"deviceID"_s)}});
    reader.isUuid(u"sessionUUID"_s);
    setup.remoteOnly = body.contains(u"isRemoteControlOnly"_s);
    if (setup.remoteOnly) {
        reader.has({{u"isRemoteControlOnly"_s, true}, {u"timingProtocol"_s, u"None"_s}});
        reader.lacks({u"timingPort"_s});
    } else {
        setup.timing = readTiming(reader, sender, setup.timingPort);
    }
    if (!reader.wrong.isEmpty()) return std::unexpected(reader.wrong);
    return setup;
}

std::expected<StreamSetup, QString> readStreamSetup(const QVariantMap& body) {
    const QVariantList streams = body.value(u"streams"_s).toList();
    if (streams.size() != 1 || body.size() != 1) return std::unexpected(u"SETUP of not one stream"_s);
    Reader reader{streams[0].toMap()};
    StreamSetup setup;
    reader.isUuid(u"clientUUID"_s);
    setup.remote = reader.integer(u"controlType"_s) == 2;
    reader.has({{u"type"_s, 130}, {u"controlType"_s, setup.remote ? 2 : 1}});
    if (setup.remote) {
        reader.isUuid(u"channelID"_s);
        reader.has({{u"clientTypeUUID"_s, u"1910A70F-DBC0-4242-AF95-115DB30604E1"_s},
                    {u"wantsDedicatedSocket"_s, true}});
        setup.seed = reader.integer(u"seed"_s);
    } else {
        reader.has({{u"clientTypeUUID"_s, u"A6B27562-B43A-4F2D-B75F-82391E250194"_s}});
        reader.require(reader.text(u"channelID"_s).endsWith("-RCS-1"_L1), u"channelID"_s);
    }
    reader.require(reader.body.size() == (setup.remote ? 7 : 5), u"key too many"_s);
    if (!reader.wrong.isEmpty()) return std::unexpected(reader.wrong);
    return setup;
}

}  // namespace velmora::test
