#include "Television/Options.h"

#include "Sender/Pairing/Crypto.h"

#include <QMap>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Flavour = TelevisionOptions::Flavour;

QString usualModel(Flavour flavour) {
    switch (flavour) {
        case Flavour::plain:
        case Flavour::password:
            return u"Television,1"_s;
        case Flavour::legacyKeys:
        case Flavour::legacyPin:
            return u"AppleTV3,2"_s;
        case Flavour::transient:
            return u"Television,2"_s;
        case Flavour::paired:
            return u"AppleTV14,1"_s;
    }
    return {};
}

// Features by their bits.
constexpr int video = 0;
constexpr int photo = 1;
constexpr int volume = 3;
constexpr int liveStreaming = 4;
constexpr int sound = 9;
constexpr int legacyPairing = 27;
constexpr int queue = 33;
constexpr int encryption = 38;
constexpr int preciseClock = 41;
constexpr int systemPairing = 43;
constexpr int homePairing = 46;
constexpr int transientPairing = 48;
constexpr int queueOnly = 49;

quint64 bits(std::initializer_list<int> numbers) {
    quint64 bits = 0;
    for (const int number : numbers) bits |= quint64{1} << unsigned(number);
    return bits;
}

QByteArray hexadecimal(quint64 number) {
    return "0x" + QByteArray::number(number, 16).toUpper();
}

}  // namespace

std::optional<Flavour> TelevisionOptions::readFlavour(const QString& text) {
    static const QMap<QString, Flavour> names{
        {u"plain"_s, Flavour::plain},
        {u"password"_s, Flavour::password},
        {u"legacy-keys"_s, Flavour::legacyKeys},
        {u"legacy-pin"_s, Flavour::legacyPin},
        {u"transient"_s, Flavour::transient},
        {u"paired"_s, Flavour::paired},
    };
    return names.contains(text) ? std::optional(names.value(text)) : std::nullopt;
}

std::optional<TelevisionOptions::Handover> TelevisionOptions::readHandover(const QString& text) {
    if (text == "play"_L1) return Handover::play;
    if (text == "queue"_L1) return Handover::queue;
    return std::nullopt;
}

TelevisionOptions TelevisionOptions::completed() const {
    TelevisionOptions complete = *this;
    if (flavour == Flavour::password && password.isEmpty()) complete.password = u"secret"_s;
    if (model.isEmpty()) complete.model = usualModel(flavour);
    if (systemVersion.isEmpty() && complete.isApples() && isEncrypted())
        complete.systemVersion = handover == Handover::queue ? u"26.6"_s : u"17.4"_s;
    return complete;
}

QString deviceIdentifier(const TelevisionOptions& options) {
    const QByteArray hash =
        Crypto::digest(Crypto::Hash::sha1, {options.name.toUtf8()}).first(5).toByteArray();
    return u"02:"_s + QString::fromLatin1(hash.toHex(':')).toUpper();
}

QString sourceVersion(const TelevisionOptions& options) {
    if (options.isLegacy()) return u"220.68"_s;
    if (!options.isEncrypted()) return u"130.14"_s;
    return options.isApples() && options.hasQueue() ? u"960.13.1"_s : u"377.25.06"_s;
}

quint64 features(const TelevisionOptions& options) {
    if (options.isLegacy()) return bits({video, photo, volume, liveStreaming, sound, legacyPairing, queue});
    if (!options.isEncrypted()) return 0x77;
    const quint64 common = bits({liveStreaming, sound, queue, encryption, preciseClock, systemPairing,
                                 homePairing, transientPairing});
    if (options.isApples()) return common | bits({video, photo, volume});
    return common | bits({options.hasQueue() ? queueOnly : video});
}

quint64 statusFlags(const TelevisionOptions& options) {
    quint64 flags = 0x4;
    if (options.flavour == Flavour::paired) flags |= 0x640;
    if (options.flavour == Flavour::legacyPin) flags |= 0x200;
    if (!options.password.isEmpty() && options.isEncrypted()) flags |= 0x80;
    if (options.does(Misbehaviour::isBusy)) flags |= 0x20000;
    return flags;
}

QList<QByteArray> announcement(const TelevisionOptions& options) {
    const quint64 all = features(options);
    QByteArray featureText = hexadecimal(all & 0xFFFFFFFF);
    if (all >> 32U) featureText += ',' + hexadecimal(all >> 32U);
    QList<QByteArray> entries{"deviceid=" + deviceIdentifier(options).toLatin1(), "features=" + featureText,
                              "flags=" + hexadecimal(statusFlags(options)), "model=" + options.model.toUtf8(),
                              "srcvers=" + sourceVersion(options).toLatin1()};
    if (!options.systemVersion.isEmpty()) entries.append("osvers=" + options.systemVersion.toUtf8());
    if (options.does(Misbehaviour::restricted)) entries.append("acl=1");
    return entries;
}

}  // namespace velmora::test
