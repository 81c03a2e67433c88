#include "Sender/Pairing/HapMessages.h"

#include <QtEndian>

#include <algorithm>
#include <chrono>

namespace velmora::HapMessages {

using Tlv8::Item;
using Tlv8::Tag;
using Kind = PairingError::Kind;

namespace {

/// The longest pause believed; seen in the wild were three hours.
constexpr std::chrono::seconds longestWait = std::chrono::hours(24);

std::chrono::seconds retryDelay(const QList<Item>& items) {
    const QByteArray bytes = Tlv8::find(items, Tag::retryDelay).value_or(QByteArray());
    quint64 seconds = 0;
    for (qsizetype i = std::min<qsizetype>(bytes.size(), 8); i-- > 0;)
        seconds = seconds << 8 | static_cast<quint8>(bytes[i]);
    return std::chrono::seconds(std::min<quint64>(seconds, longestWait.count()));
}

Kind meaningOfAuthentication(PairingStage stage) {
    switch (stage) {
        case PairingStage::verify:
            return Kind::forgotten;
        case PairingStage::transient:
            return Kind::pinNeeded;
        case PairingStage::setupProof:
            return Kind::wrongPin;
        default:
            return Kind::refused;
    }
}

PairingError errorIn(const QList<Item>& items, const QByteArray& code, PairingStage stage) {
    if (code.size() != 1) return {Kind::malformed};
    switch (static_cast<ErrorCode>(code[0])) {
        case ErrorCode::authentication:
            return {meaningOfAuthentication(stage)};
        case ErrorCode::backOff:
            return {Kind::wait, retryDelay(items)};
        case ErrorCode::maximumPeers:
            return {Kind::tooManyPeers};
        case ErrorCode::maximumTries:
            return {Kind::tooManyTries};
        case ErrorCode::unavailable:
            return {Kind::unavailable};
        case ErrorCode::busy:
            return {Kind::busy};
        case ErrorCode::unknown:
            break;
    }
    return {Kind::refused};
}

QByteArray joined(QByteArrayView one, QByteArrayView two, QByteArrayView three) {
    QByteArray result;
    result.reserve(one.size() + two.size() + three.size());
    result += one;
    result += two;
    result += three;
    return result;
}

QByteArray nonce(QByteArrayView label) {
    return QByteArray(4, '\0') += label;
}

}  // namespace

Secret setupKey(const Secret& session) {
    return Crypto::hkdf(session, "Pair-Setup-Encrypt-Salt", "Pair-Setup-Encrypt-Info");
}

Secret setupSignatureKey(const Secret& session, Side side) {
    if (side == Side::controller)
        return Crypto::hkdf(session, "Pair-Setup-Controller-Sign-Salt", "Pair-Setup-Controller-Sign-Info");
    return Crypto::hkdf(session, "Pair-Setup-Accessory-Sign-Salt", "Pair-Setup-Accessory-Sign-Info");
}

Secret verifyKey(const Secret& shared) {
    return Crypto::hkdf(shared, "Pair-Verify-Encrypt-Salt", "Pair-Verify-Encrypt-Info");
}

QByteArray introduction(const Identity& identity, const Secret& session, Side side, const QList<Item>& more) {
    const QByteArray publicKey = identity.publicKey();
    const QByteArray text = joined(setupSignatureKey(session, side), identity.identifier, publicKey);
    const QList<Item> items{{Tag::identifier, identity.identifier},
                            {Tag::publicKey, publicKey},
                            {Tag::signature, Crypto::sign(identity.seed, text)}};
    return Tlv8::encode(items + more);
}

std::optional<Peer> introduced(QByteArrayView introduction, const Secret& session, Side side) {
    const auto items = Tlv8::parse(introduction);
    if (!items) return std::nullopt;
    const auto identifier = value(*items, Tag::identifier, maximumIdentifierSize);
    const auto publicKey = value(*items, Tag::publicKey, Crypto::keySize);
    const auto signature = value(*items, Tag::signature, Crypto::signatureSize);
    if (!identifier || !publicKey || !signature) return std::nullopt;
    const QByteArray text = joined(setupSignatureKey(session, side), *identifier, *publicKey);
    if (!Crypto::verify(*publicKey, text, *signature)) return std::nullopt;
    return Peer{*identifier, *publicKey};
}

QByteArray evidence(const Identity& identity, QByteArrayView ownKey, QByteArrayView theirKey) {
    const QByteArray text = joined(ownKey, identity.identifier, theirKey);
    return Tlv8::encode(
        {{Tag::identifier, identity.identifier}, {Tag::signature, Crypto::sign(identity.seed, text)}});
}

bool isEvidence(QByteArrayView evidence, const Peer& peer, QByteArrayView peerKey, QByteArrayView otherKey) {
    const auto items = Tlv8::parse(evidence);
    if (!items) return false;
    const auto identifier = value(*items, Tag::identifier, maximumIdentifierSize);
    const auto signature = value(*items, Tag::signature, Crypto::signatureSize);
    if (!identifier || !signature || *identifier != peer.identifier) return false;
    return Crypto::verify(peer.publicKey, joined(peerKey, *identifier, otherKey), *signature);
}

QByteArray seal(const Secret& key, QByteArrayView label, QByteArrayView plain) {
    return Crypto::seal(key, nonce(label), plain);
}

std::optional<QByteArray> open(const Secret& key, QByteArrayView label, QByteArrayView sealed) {
    return Crypto::open(key, nonce(label), sealed);
}

QByteArray message(char state, const QList<Item>& items) {
    return Tlv8::encode(QList<Item>{{Tag::state, QByteArray(1, state)}} + items);
}

PairingResult<QList<Item>> readReply(QByteArrayView reply, char state, PairingStage stage) {
    const auto items = Tlv8::parse(reply);
    if (!items) return std::unexpected(PairingError{Kind::malformed});
    if (const auto code = Tlv8::find(*items, Tag::error))
        return std::unexpected(errorIn(*items, *code, stage));
    if (Tlv8::find(*items, Tag::state) != QByteArray(1, state))
        return std::unexpected(PairingError{Kind::malformed});
    return *items;
}

PairingResult<QByteArray> value(const QList<Item>& items, Tag tag, qsizetype maximumSize) {
    const std::optional<QByteArray> found = Tlv8::find(items, tag);
    if (!found || found->isEmpty() || found->size() > maximumSize)
        return std::unexpected(PairingError{Kind::malformed});
    return *found;
}

}  // namespace velmora::HapMessages
