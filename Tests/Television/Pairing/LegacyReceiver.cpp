#include "Television/Pairing/LegacyReceiver.h"

#include <utility>

namespace velmora::test {

LegacySetupReceiver::LegacySetupReceiver(Secret seed, const QString& pin, Crypto::RandomSource random)
    : seed_(std::move(seed)), pin_(pin), random_(std::move(random)) {}

LegacySetupReceiver::Challenge LegacySetupReceiver::challenge(const QByteArray& user) {
    const QByteArray salt = random_(16).toByteArray();
    server_.emplace(SrpVariant::legacy, SrpLogin{user, Secret::fromText(pin_), salt},
                    random_(Crypto::keySize));
    return {server_->publicKey(), salt};
}

std::optional<QByteArray> LegacySetupReceiver::check(const LegacyPinSetup::Proof& proof) {
    if (!server_) return std::nullopt;
    session_ = server_->session(proof.pk);
    server_.reset();
    if (!session_ || !Crypto::equal(proof.proof, session_->clientProof)) session_.reset();
    if (!session_) return std::nullopt;
    return session_->serverProof;
}

std::optional<LegacyPairing::Sealed> LegacySetupReceiver::exchange(const LegacyPairing::Sealed& sealed) {
    using LegacyPairing::Side;
    if (!session_) return std::nullopt;
    paired_ = LegacyPairing::open(session_->key, Side::sender, sealed);
    if (!paired_) return std::nullopt;
    return LegacyPairing::seal(session_->key, Side::receiver, Crypto::ed25519PublicKey(seed_));
}

LegacyVerifyReceiver::LegacyVerifyReceiver(Secret seed, std::optional<QByteArray> known,
                                           const Crypto::RandomSource& random)
    : seed_(std::move(seed)),
      known_(std::move(known)),
      privateKey_(random(Crypto::keySize)),
      publicKey_(Crypto::x25519PublicKey(privateKey_)) {}

std::optional<QByteArray> LegacyVerifyReceiver::answer(QByteArrayView request) {
    if (request.size() < 4) return std::nullopt;
    const QByteArrayView body = request.sliced(4);
    if (request[0] == 1) return present(body);
    verified_ = check(body);
    return verified_ ? std::optional(QByteArray()) : std::nullopt;
}

std::optional<QByteArray> LegacyVerifyReceiver::present(QByteArrayView keys) {
    if (keys.size() != 2 * Crypto::keySize) return std::nullopt;
    senderKey_ = keys.first(Crypto::keySize).toByteArray();
    senderIdentity_ = keys.last(Crypto::keySize).toByteArray();
    if (known_ && senderIdentity_ != *known_) return std::nullopt;
    const auto shared = Crypto::x25519(privateKey_, senderKey_);
    if (!shared) return std::nullopt;
    stream_ = LegacyPairing::verifyStream(*shared);
    return publicKey_ + stream_->apply(Crypto::sign(seed_, publicKey_ + senderKey_));
}

bool LegacyVerifyReceiver::check(QByteArrayView sealedSignature) {
    if (!stream_) return false;
    const QByteArray signature = stream_->apply(sealedSignature);
    return Crypto::verify(senderIdentity_, senderKey_ + publicKey_, signature);
}

}  // namespace velmora::test
