#pragma once

#include "Sender/Pairing/Crypto.h"
#include "Sender/Pairing/PairingError.h"
#include "Sender/Pairing/Tlv8.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

/// The formulas and message forms that both sides of a HAP pairing share.
namespace velmora::HapMessages {

constexpr char setupUser[] = "Pair-Setup";
/// The password of every pairing without PIN.
constexpr char16_t transientPassword[] = u"3939";
constexpr char transientFlag = 0x10;
constexpr qsizetype saltSize = 16;
/// Identifiers are texts like UUIDs and hardware addresses; this is room enough.
constexpr qsizetype maximumIdentifierSize = 128;

/// Values of `Tlv8::Tag::error`.
enum class ErrorCode : quint8 {
    unknown = 1,
    authentication = 2,
    backOff = 3,
    maximumPeers = 4,
    maximumTries = 5,
    unavailable = 6,
    busy = 7,
};

/// Who is at either end: a name in text and a long-term Ed25519 key.
struct Identity {
    QByteArray identifier;
    Secret seed;
    [[nodiscard]] QByteArray publicKey() const { return Crypto::ed25519PublicKey(seed); }
};
struct Peer {
    QByteArray identifier;
    QByteArray publicKey;
    bool operator==(const Peer&) const = default;
};

enum class Side { controller, accessory };

/// Keys derived from the session key of a pair-setup.
[[nodiscard]] Secret setupKey(const Secret& session);
[[nodiscard]] Secret setupSignatureKey(const Secret& session, Side side);
/// From the shared secret of a pair-verify.
[[nodiscard]] Secret verifyKey(const Secret& shared);

/// What one side says about itself in M5 and M6, signed; `more` items follow unsigned.
[[nodiscard]] QByteArray introduction(const Identity& identity, const Secret& session, Side side,
                                      const QList<Tlv8::Item>& more = {});
/// Whose introduction it is; nothing if it is malformed or its signature does not fit.
[[nodiscard]] std::optional<Peer> introduced(QByteArrayView introduction, const Secret& session, Side side);

/// What one side says in M2 and M3 of pair-verify. The keys are both sides' X25519 keys, the signer's first.
[[nodiscard]] QByteArray evidence(const Identity& identity, QByteArrayView ownKey, QByteArrayView theirKey);
/// Whether `peer` signed it.
[[nodiscard]] bool isEvidence(QByteArrayView evidence, const Peer& peer, QByteArrayView peerKey,
                              QByteArrayView otherKey);

/// Seals and opens a message's encrypted part; `label` is its eight-letter name, as "PS-Msg05".
[[nodiscard]] QByteArray seal(const Secret& key, QByteArrayView label, QByteArrayView plain);
[[nodiscard]] std::optional<QByteArray> open(const Secret& key, QByteArrayView label, QByteArrayView sealed);

/// A message of state M`state` with these items.
[[nodiscard]] QByteArray message(char state, const QList<Tlv8::Item>& items);
/// The items of the receiver's reply, which must be M`state`; its error item becomes the error.
[[nodiscard]] PairingResult<QList<Tlv8::Item>> readReply(QByteArrayView reply, char state,
                                                         PairingStage stage);

/// The only value of a type; `Kind::malformed` if it is missing, repeated, empty or longer than
/// `maximumSize`.
[[nodiscard]] PairingResult<QByteArray> value(const QList<Tlv8::Item>& items, Tlv8::Tag tag,
                                              qsizetype maximumSize);

}  // namespace velmora::HapMessages
