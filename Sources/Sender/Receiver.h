#pragma once

#include "Sender/Discovery/TxtRecord.h"

#include <QHostAddress>
#include <QList>
#include <QString>

#include <expected>
#include <optional>

namespace velmora {

/// A television, or anything else that takes video over AirPlay.
struct Receiver {
    QString name{};          ///< what to call it in front of the user
    QString identifier{};    ///< stable across starts; the address and port where nothing better is known
    QHostAddress address{};  ///< the best of `addresses`; null while only `host` is known
    quint16 port = 0;

    QString host{};                   ///< where the user typed a host's name: to be looked up at each use
    QString model{};                  ///< `AppleTV11,1`; empty when unknown
    QList<QHostAddress> addresses{};  ///< all that are known, best first
    std::optional<TxtRecord> announced{};  ///< absent when typed, or remembered and not seen yet

    bool operator==(const Receiver&) const = default;

    static constexpr quint16 defaultPort = 7000;  ///< of Apple's boxes and of televisions

    /// A receiver from `HOST`, `HOST:PORT`, an IPv6 address, or `[IPv6]:PORT`; its identifier tells host and
    /// port in one form, whatever way they were written. Fails with the reason in plain words.
    [[nodiscard]] static std::expected<Receiver, QString> fromText(const QString& text);

    /// Whether `identifier` is of the kind that `fromText` makes.
    [[nodiscard]] bool isTyped() const;

    /// Whether a movie can be handed to it by URL; if not, the reason as the rest of a sentence that begins
    /// with its name: "plays sound only". One that announces nothing is believed to.
    [[nodiscard]] std::expected<void, QString> takesVideo() const;
};

/// What to prefer among the addresses of one receiver.
namespace Addresses {

/// False for link-local IPv6: it means nothing without a scope, and a movie's URL cannot carry one.
[[nodiscard]] bool carriesMedia(const QHostAddress& address);

/// Without repetition and without what is no host on the network; best first: IPv4, IPv6, IPv4 link-local,
/// IPv6 link-local. `local` keeps loopback addresses, which only a receiver on this computer may name.
[[nodiscard]] QList<QHostAddress> inOrder(const QList<QHostAddress>& addresses, bool local);

}  // namespace Addresses

}  // namespace velmora
