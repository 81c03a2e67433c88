#include "Sender/Pairing/HapPairing.h"

#include <QUuid>

#include <utility>

namespace velmora {

using namespace HapMessages;
using Tlv8::Item;
using Tlv8::Tag;
using Kind = PairingError::Kind;

namespace {

constexpr qsizetype publicKeySize = 384;
constexpr qsizetype proofSize = 64;
/// The longest text that fits the short form of the name item.
constexpr qsizetype maximumNameSize = 32;

auto malformed() {
    return std::unexpected(PairingError{Kind::malformed});
}

/// UTF-8 of at most 32 bytes, cut between characters.
QByteArray shortName(QString name) {
    while (name.toUtf8().size() > maximumNameSize) {
        const bool pair = name.size() > 1 && name.back().isLowSurrogate();
        name.chop(pair ? 2 : 1);
    }
    return name.toUtf8();
}

/// The dictionary {"name": name} in OPACK, which is what receivers want it in.
QByteArray packedName(const QByteArray& name) {
    return QByteArray("\xE1\x44name") + static_cast<char>(0x40 + name.size()) + name;
}

}  // namespace

HapIdentity makeHapIdentity(const Crypto::RandomSource& random) {
    const QByteArray bytes = random(16).toByteArray();
    const QUuid uuid = QUuid::fromRfc4122(bytes);
    return {uuid.toByteArray(QUuid::WithoutBraces).toUpper(), random(Crypto::keySize)};
}

HapPasswordProof::HapPasswordProof(PairingStage stage, const Crypto::RandomSource& random)
    : stage_(stage), client_(SrpVariant::hap, random) {}

QByteArray HapPasswordProof::start() const {
    QList<Item> items{{Tag::method, QByteArray(1, '\0')}, {Tag::state, QByteArray(1, 1)}};
    if (stage_ == PairingStage::transient) items.append({Tag::flags, QByteArray(1, transientFlag)});
    return Tlv8::encode(items);
}

PairingResult<void> HapPasswordProof::takeChallenge(QByteArrayView m2) {
    if (std::exchange(step_, Step::over) != Step::challenge) return malformed();
    const auto items = readReply(m2, 2, stage_);
    if (!items) return std::unexpected(items.error());
    const auto salt = value(*items, Tag::salt, saltSize);
    const auto key = value(*items, Tag::publicKey, publicKeySize);
    if (!salt || !key || salt->size() != saltSize) return malformed();
    login_ = {setupUser, {}, *salt};
    serverKey_ = *key;
    step_ = Step::prove;
    return {};
}

PairingResult<QByteArray> HapPasswordProof::prove(Secret password) {
    if (std::exchange(step_, Step::over) != Step::prove) return malformed();
    login_.password = std::move(password);
    std::optional<SrpSession> session = client_.session(login_, serverKey_);
    login_.password = {};
    if (!session) return malformed();
    session_ = std::move(*session);
    step_ = Step::finish;
    return message(3, {{Tag::publicKey, client_.publicKey()}, {Tag::proof, session_.clientProof}});
}

PairingResult<Secret> HapPasswordProof::finish(QByteArrayView m4) {
    if (std::exchange(step_, Step::over) != Step::finish) return malformed();
    const PairingStage stage = stage_ == PairingStage::transient ? stage_ : PairingStage::setupProof;
    const auto items = readReply(m4, 4, stage);
    if (!items) return std::unexpected(items.error());
    const auto proof = value(*items, Tag::proof, proofSize);
    if (!proof) return malformed();
    if (!session_.isServerProof(*proof)) return std::unexpected(PairingError{Kind::untrusted});
    return std::move(session_.key);
}

HapPinSetup::HapPinSetup(HapIdentity identity, const QString& displayName, const Crypto::RandomSource& random)
    : identity_(std::move(identity)),
      displayName_(shortName(displayName)),
      proof_(PairingStage::setupStart, random) {}

PairingResult<QByteArray> HapPinSetup::prove(const QString& pin) {
    return proof_.prove(Secret::fromText(QStringView(pin).trimmed()));
}

PairingResult<QByteArray> HapPinSetup::introduce(QByteArrayView m4) {
    auto session = proof_.finish(m4);
    if (!session) return std::unexpected(session.error());
    session_ = std::move(*session);
    QList<Item> more;
    if (!displayName_.isEmpty()) more.append({Tag::name, packedName(displayName_)});
    const QByteArray plain = introduction(identity_, *session_, Side::controller, more);
    return message(5, {{Tag::encryptedData, seal(setupKey(*session_), "PS-Msg05", plain)}});
}

PairingResult<HapCredentials> HapPinSetup::finish(QByteArrayView m6) {
    const std::optional<Secret> session = std::exchange(session_, std::nullopt);
    if (!session) return malformed();
    const auto items = readReply(m6, 6, PairingStage::setupIdentity);
    if (!items) return std::unexpected(items.error());
    const auto sealed = value(*items, Tag::encryptedData, Tlv8::maximumSize);
    if (!sealed) return malformed();
    const auto plain = open(setupKey(*session), "PS-Msg06", *sealed);
    if (!plain) return std::unexpected(PairingError{Kind::untrusted});
    const std::optional<HapPeer> peer = introduced(*plain, *session, Side::accessory);
    if (!peer) return std::unexpected(PairingError{Kind::untrusted});
    return HapCredentials{identity_, *peer};
}

HapTransientSetup::HapTransientSetup(const Crypto::RandomSource& random)
    : proof_(PairingStage::transient, random) {}

PairingResult<QByteArray> HapTransientSetup::prove(QByteArrayView m2, const QString& password) {
    if (const auto taken = proof_.takeChallenge(m2); !taken) return std::unexpected(taken.error());
    return proof_.prove(Secret::fromText(password));
}

}  // namespace velmora
