#include "Sender/Pairing/HapPairing.h"

#include <utility>

namespace velmora {

using namespace HapMessages;
using Tlv8::Tag;
using Kind = PairingError::Kind;

namespace {

auto failed(Kind kind) {
    return std::unexpected(PairingError{kind});
}

}  // namespace

HapVerify::HapVerify(HapCredentials credentials, const Crypto::RandomSource& random)
    : credentials_(std::move(credentials)),
      privateKey_(random(Crypto::keySize)),
      publicKey_(Crypto::x25519PublicKey(privateKey_)) {}

QByteArray HapVerify::start() const {
    return message(1, {{Tag::publicKey, publicKey_}});
}

PairingResult<QByteArray> HapVerify::prove(QByteArrayView m2) {
    if (std::exchange(step_, Step::over) != Step::prove) return failed(Kind::malformed);
    const auto items = readReply(m2, 2, PairingStage::verify);
    if (!items) return std::unexpected(items.error());
    const auto theirKey = value(*items, Tag::publicKey, Crypto::keySize);
    const auto sealed = value(*items, Tag::encryptedData, Tlv8::maximumSize);
    if (!theirKey || !sealed) return failed(Kind::malformed);
    std::optional<Secret> shared = Crypto::x25519(privateKey_, *theirKey);
    if (!shared) return failed(Kind::malformed);
    shared_ = std::move(*shared);
    const Secret key = verifyKey(shared_);
    const auto plain = open(key, "PV-Msg02", *sealed);
    if (!plain || !isEvidence(*plain, credentials_.theirs, *theirKey, publicKey_))
        return failed(Kind::untrusted);
    step_ = Step::finish;
    const QByteArray ours = evidence(credentials_.ours, publicKey_, *theirKey);
    return message(3, {{Tag::encryptedData, seal(key, "PV-Msg03", ours)}});
}

PairingResult<Secret> HapVerify::finish(QByteArrayView m4) {
    if (std::exchange(step_, Step::over) != Step::finish) return failed(Kind::malformed);
    const auto items = readReply(m4, 4, PairingStage::verify);
    if (!items) return std::unexpected(items.error());
    return std::move(shared_);
}

}  // namespace velmora
