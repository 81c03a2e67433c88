#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace velmora {

/// What a receiver announces about itself beside its `_airplay._tcp` service. Anyone on the network can send
/// anything here: a field that is not written exactly as receivers write it counts as absent, and texts are
/// fit to be shown.
struct TxtRecord {
    /// Bits of `features`, named after what they mean for video by URL.
    enum class Feature {
        video = 0,            ///< the `/play` request
        photos = 1,           ///< single pictures
        mirroring = 7,        ///< the sender's screen
        sound = 9,            ///< music
        legacyPairing = 27,   ///< keys or a PIN, then a proof on each connection
        encryption = 38,      ///< the paired and encrypted session
        systemPairing = 43,   ///< pairing without a PIN is known at least
        homePairing = 46,     ///< pairing with a PIN inside the encrypted session
        easyEncryption = 48,  ///< the encrypted session, also without a PIN unless access is controlled
        videoQueue = 49,      ///< video as an item of a queue; televisions may have it without `video`
    };
    /// Masks of `flags`.
    enum Status : quint64 {
        pinEachTime = 0x8,
        passwordSet = 0x80,
        pinOnce = 0x200,
        busy = 0x20000,
    };

    QString deviceId{};  ///< upper-case hexadecimal pairs with colons; empty when absent or all zeros
    std::optional<quint64> features{};
    quint64 status = 0;
    QString model{};
    QString sourceVersion{};      ///< of the AirPlay stack: `220.68`, `870.14.1`
    QString systemVersion{};      ///< `17.4`; only Apple's own boxes tell
    QByteArray publicKey{};       ///< Ed25519, 32 bytes
    QString pairingIdentifier{};  ///< changes when the receiver is reset
    QString sessionIdentifier{};  ///< `psi`, wanted by the queue's channel
    int accessControl = 0;        ///< 1: only people sharing the receiver's home
    int accessType = 0;           ///< 2: only the receiver's own account
    bool password = false;        ///< by its own entry or by `status`

    [[nodiscard]] bool has(Feature feature) const {
        return ((features.value_or(0) >> static_cast<unsigned>(feature)) & 1U) != 0;
    }
    bool operator==(const TxtRecord&) const = default;

    /// `entries` are the strings `key=value` in the order of the packet, where the first of a key counts.
    /// Reads no more than 64 entries of at most 255 bytes, DNS's own limit.
    [[nodiscard]] static TxtRecord parse(const QList<QByteArray>& entries);
};

/// The text made fit for a window or a terminal: control and invisible formatting characters removed, blanks
/// joined, at most 64 characters. What others announce as their name passes through here.
[[nodiscard]] QString shownText(const QString& text);

}  // namespace velmora
