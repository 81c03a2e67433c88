#include "Sender/Pairing/LegacyPairing.h"

#include <utility>

namespace velmora {

using Kind = PairingError::Kind;

namespace {

constexpr qsizetype saltSize = 16;
constexpr qsizetype proofSize = 20;

auto failed(Kind kind) {
    return std::unexpected(PairingError{kind});
}

/// The first half of a hash, which is how this protocol makes its keys.
Secret derive(QByteArrayView label, const Secret& secret) {
    return Crypto::digest(Crypto::Hash::sha512, {label, secret}).first(16);
}

Secret sealingKey(const Secret& session) {
    return derive("Pair-Setup-AES-Key", session);
}

/// Counted up, as one big-endian number, by one for our message and by two for the reply.
Secret sealingNonce(const Secret& session, LegacyPairing::Side from) {
    Secret nonce = derive("Pair-Setup-AES-IV", session);
    unsigned carry = from == LegacyPairing::Side::sender ? 1 : 2;
    for (qsizetype i = nonce.size(); i-- > 0 && carry > 0;) {
        const unsigned sum = nonce.data()[i] + carry;
        nonce.data()[i] = static_cast<uchar>(sum & 0xFFU);
        carry = sum >> 8U;
    }
    return nonce;
}

}  // namespace

namespace LegacyPairing {

Sealed seal(const Secret& session, Side from, QByteArrayView publicKey) {
    const QByteArray sealed = Crypto::sealAes(sealingKey(session), sealingNonce(session, from), publicKey);
    return {sealed.chopped(Crypto::tagSize), sealed.last(Crypto::tagSize)};
}

std::optional<QByteArray> open(const Secret& session, Side from, const Sealed& sealed) {
    if (sealed.epk.size() != Crypto::keySize || sealed.authTag.size() != Crypto::tagSize) return std::nullopt;
    return Crypto::openAes(sealingKey(session), sealingNonce(session, from), sealed.epk + sealed.authTag);
}

Crypto::AesStream verifyStream(const Secret& shared) {
    return {derive("Pair-Verify-AES-Key", shared), derive("Pair-Verify-AES-IV", shared)};
}

}  // namespace LegacyPairing

LegacyIdentity makeLegacyIdentity(const Crypto::RandomSource& random) {
    return {random(8).toByteArray().toHex().toUpper(), random(Crypto::keySize)};
}

LegacyPinSetup::LegacyPinSetup(LegacyIdentity identity, const Crypto::RandomSource& random)
    : identity_(std::move(identity)), client_(SrpVariant::legacy, random) {}

PairingResult<LegacyPinSetup::Proof> LegacyPinSetup::prove(QByteArrayView pk, QByteArrayView salt,
                                                           const QString& pin) {
    if (std::exchange(step_, Step::over) != Step::prove || salt.size() != saltSize)
        return failed(Kind::malformed);
    const SrpLogin login{identity_.user, Secret::fromText(QStringView(pin).trimmed()), salt.toByteArray()};
    std::optional<SrpSession> session = client_.session(login, pk);
    if (!session) return failed(Kind::malformed);
    session_ = std::move(*session);
    step_ = Step::introduce;
    return Proof{client_.publicKey(), session_.clientProof};
}

PairingResult<LegacyPairing::Sealed> LegacyPinSetup::introduce(QByteArrayView proof) {
    if (std::exchange(step_, Step::over) != Step::introduce || proof.size() != proofSize)
        return failed(Kind::malformed);
    if (!session_.isServerProof(proof)) return failed(Kind::untrusted);
    step_ = Step::finish;
    return LegacyPairing::seal(session_.key, LegacyPairing::Side::sender, identity_.publicKey());
}

PairingResult<LegacyCredentials> LegacyPinSetup::finish(const LegacyPairing::Sealed& reply) {
    if (std::exchange(step_, Step::over) != Step::finish) return failed(Kind::malformed);
    const auto theirKey = LegacyPairing::open(session_.key, LegacyPairing::Side::receiver, reply);
    session_.key = {};
    if (!theirKey) return failed(Kind::untrusted);
    return LegacyCredentials{identity_, *theirKey};
}

PairingResult<LegacyCredentials> legacyKeyExchange(const LegacyIdentity& identity, QByteArrayView reply) {
    if (reply.size() != Crypto::keySize) return failed(Kind::malformed);
    return LegacyCredentials{identity, reply.toByteArray()};
}

LegacyVerify::LegacyVerify(LegacyCredentials credentials, const Crypto::RandomSource& random)
    : credentials_(std::move(credentials)),
      privateKey_(random(Crypto::keySize)),
      publicKey_(Crypto::x25519PublicKey(privateKey_)) {}

QByteArray LegacyVerify::start() const {
    return QByteArray("\1\0\0\0", 4) + publicKey_ + credentials_.ours.publicKey();
}

PairingResult<QByteArray> LegacyVerify::prove(QByteArrayView reply) {
    if (std::exchange(over_, true) || reply.size() != Crypto::keySize + Crypto::signatureSize)
        return failed(Kind::malformed);
    const QByteArray theirKey = reply.first(Crypto::keySize).toByteArray();
    const std::optional<Secret> shared = Crypto::x25519(privateKey_, theirKey);
    if (!shared) return failed(Kind::malformed);
    Crypto::AesStream stream = LegacyPairing::verifyStream(*shared);
    const QByteArray signature = stream.apply(reply.sliced(Crypto::keySize));
    if (!Crypto::verify(credentials_.theirPublicKey, theirKey + publicKey_, signature))
        return failed(Kind::untrusted);
    const QByteArray ours = Crypto::sign(credentials_.ours.seed, publicKey_ + theirKey);
    return QByteArray(4, '\0') + stream.apply(ours);
}

}  // namespace velmora
