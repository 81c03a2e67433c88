#include "Sender/Receiver.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Televisions)
};

struct HostAndPort {
    QString host;
    QString port;
};

/// The last colon parts host and port, unless there are more: then the text is an IPv6 address by itself.
HostAndPort splitPort(const QString& text) {
    if (text.startsWith(u'[')) {
        const qsizetype end = text.indexOf(u']');
        const QString rest = end < 0 ? u"?"_s : text.sliced(end + 1);
        const bool sane = rest.isEmpty() || (rest.startsWith(u':') && rest.size() > 1);
        return {sane ? text.sliced(1, end - 1) : QString(), rest.sliced(rest.isEmpty() ? 0 : 1)};
    }
    if (text.count(u':') != 1) return {text, QString()};
    const qsizetype colon = text.indexOf(u':');
    return {text.first(colon), text.size() == colon + 1 ? u"?"_s : text.sliced(colon + 1)};
}

std::optional<quint16> portFrom(const QString& text) {
    static const QRegularExpression digits(u"\\A[0-9]{1,5}\\z"_s);
    if (text.isEmpty()) return Receiver::defaultPort;
    const uint port = digits.match(text).hasMatch() ? text.toUInt() : 0;
    if (port < 1 || port > 65535) return std::nullopt;
    return static_cast<quint16>(port);
}

/// The name as the DNS knows it, in lower case; empty when it can be none.
QString hostNameFrom(const QString& text) {
    static const QRegularExpression labels(
        u"\\A[a-z0-9_]([a-z0-9_-]*[a-z0-9_])?(\\.[a-z0-9_]([a-z0-9_-]*[a-z0-9_])?)*\\.?\\z"_s);
    static const QRegularExpression numbers(u"\\A[0-9.]*\\z"_s);
    const QString name = QString::fromLatin1(QUrl::toAce(text)).toLower();
    const bool sane = name.size() <= 253 && labels.match(name).hasMatch() && !numbers.match(name).hasMatch();
    return sane ? name : QString();
}

/// A literal address written in full. Qt would also read "7" and "1.2" as IPv4.
QHostAddress literalFrom(const QString& text) {
    QHostAddress address;
    if (!text.contains(u':') && text.count(u'.') != 3) return address;
    address.setAddress(text);
    return address;
}

}  // namespace

std::expected<Receiver, QString> Receiver::fromText(const QString& text) {
    const auto [host, portText] = splitPort(text.trimmed());
    const std::optional<quint16> port = portFrom(portText);
    if (!port)
        return std::unexpected(Texts::tr("“%1” names no port between 1 and 65535.").arg(shownText(text)));

    Receiver receiver{.port = *port};
    receiver.address = literalFrom(host);
    QString shown = receiver.address.toString();
    if (receiver.address.isNull()) {
        receiver.host = shown = hostNameFrom(host);
        if (shown.isEmpty())
            return std::unexpected(
                Texts::tr("“%1” is no address. It is written HOST, HOST:PORT or [IPv6]:PORT.")
                    .arg(shownText(text)));
    } else {
        receiver.addresses = {receiver.address};
    }
    receiver.name = *port == defaultPort ? shown : text.trimmed();
    receiver.identifier =
        shown.contains(u':') ? u"[%1]:%2"_s.arg(shown).arg(*port) : u"%1:%2"_s.arg(shown).arg(*port);
    return receiver;
}

bool Receiver::isTyped() const {
    const auto typed = fromText(identifier);
    return typed && typed->identifier == identifier;
}

std::expected<void, QString> Receiver::takesVideo() const {
    using enum TxtRecord::Feature;
    if (!announced) return {};
    if (!announced->features) return std::unexpected(Texts::tr("does not say what it can play"));
    if (!announced->has(video) && !announced->has(videoQueue)) {
        if (announced->has(mirroring)) return std::unexpected(Texts::tr("takes screen mirroring only"));
        if (announced->has(sound)) return std::unexpected(Texts::tr("plays sound only"));
        return std::unexpected(Texts::tr("does not play movies"));
    }
    if (!addresses.isEmpty() && std::ranges::none_of(addresses, Addresses::carriesMedia))
        return std::unexpected(
            Texts::tr("has only a link-local IPv6 address, over which it cannot fetch a movie"));
    return {};
}

namespace Addresses {

namespace {

int rank(const QHostAddress& address) {
    const bool isIPv4 = address.protocol() == QAbstractSocket::IPv4Protocol;
    return (address.isLinkLocal() ? 2 : 0) + (isIPv4 ? 0 : 1);
}

QHostAddress plain(const QHostAddress& address) {
    bool isIPv4 = false;
    const quint32 number = address.toIPv4Address(&isIPv4);
    return isIPv4 ? QHostAddress(number) : address;
}

bool isHost(const QHostAddress& address, bool local) {
    const bool nowhere = address.isNull() || address.isMulticast() || address.isBroadcast() ||
                         address == QHostAddress(QHostAddress::AnyIPv4) ||
                         address == QHostAddress(QHostAddress::AnyIPv6);
    return !nowhere && (local || !address.isLoopback());
}

}  // namespace

bool carriesMedia(const QHostAddress& address) {
    return address.protocol() == QAbstractSocket::IPv4Protocol || !address.isLinkLocal();
}

QList<QHostAddress> inOrder(const QList<QHostAddress>& addresses, bool local) {
    QList<QHostAddress> ordered;
    for (const QHostAddress& address : addresses) {
        const QHostAddress candidate = plain(address);
        if (isHost(candidate, local) && !ordered.contains(candidate)) ordered.append(candidate);
    }
    std::ranges::sort(ordered, {}, [](const QHostAddress& a) { return std::pair(rank(a), a.toString()); });
    return ordered;
}

}  // namespace Addresses

}  // namespace velmora
