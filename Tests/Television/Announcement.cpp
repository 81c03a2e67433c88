#include "Television/Announcement.h"

#include "Sender/Pairing/Crypto.h"

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Flavour = TelevisionOptions::Flavour;

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
