#include "Television/Pairing/HapReceiver.h"

#include <QtEndian>

#include <utility>

namespace velmora::test {

using namespace HapMessages;
using Tlv8::Tag;

namespace {

QByteArray byte(int value) {
    return {1, static_cast<char>(value)};
}

QByteArray failure(int state, ErrorCode code) {
    return message(static_cast<char>(state), {{Tag::error, byte(static_cast<int>(code))}});
}

int stateOf(const QList<Tlv8::Item>& items) {
    const QByteArray state = Tlv8::find(items, Tag::state).value_or(QByteArray());
    return state.size() == 1 ? state[0] : 0;
}

}  // namespace

HapSetupReceiver::HapSetupReceiver(Identity identity, const QString& pin, Crypto::RandomSource random)
    : identity_(std::move(identity)), pin_(pin), random_(std::move(random)) {}

void HapSetupReceiver::refuse(ErrorCode error, std::chrono::seconds wait) {
    refusal_ = {{Tag::error, byte(static_cast<int>(error))}};
    QByteArray delay(4, '\0');
    qToLittleEndian(static_cast<quint32>(wait.count()), delay.data());
    if (wait.count() > 0) refusal_.append({Tag::retryDelay, delay});
}

QByteArray HapSetupReceiver::answer(QByteArrayView request) {
    const auto items = Tlv8::parse(request);
    const int state = items ? stateOf(*items) : 0;
    if (state == 0 || state != std::exchange(state_, 0)) return failure(state + 1, ErrorCode::unknown);
    if (state == 1) return challenge(*items);
    return state == 3 ? checkProof(*items) : exchange(*items);
}

QByteArray HapSetupReceiver::challenge(const Items& items) {
    if (!refusal_.isEmpty()) return message(2, refusal_);
    transient_ = Tlv8::find(items, Tag::flags) == byte(transientFlag);
    if (transient_ && !takesTransient_) return failure(2, ErrorCode::authentication);
    const QString password = transient_ ? QString::fromUtf16(transientPassword) : pin_;
    const QByteArray salt = random_(saltSize).toByteArray();
    const SrpServer& server = server_.emplace(
        SrpVariant::hap, SrpLogin{setupUser, Secret::fromText(password), salt}, random_(Crypto::keySize));
    state_ = 3;
    return message(2, {{Tag::salt, salt}, {Tag::publicKey, server.publicKey()}});
}

QByteArray HapSetupReceiver::checkProof(const Items& items) {
    const QByteArray proof = Tlv8::find(items, Tag::proof).value_or(QByteArray());
    const QByteArray key = Tlv8::find(items, Tag::publicKey).value_or(QByteArray());
    session_ = server_ ? server_->session(key) : std::nullopt;
    if (!session_ || !Crypto::equal(proof, session_->clientProof))
        return failure(4, ErrorCode::authentication);
    if (transient_)
        transientKey_ = session_->key;
    else
        state_ = 5;
    return message(4, {{Tag::proof, session_->serverProof}});
}

QByteArray HapSetupReceiver::exchange(const Items& items) {
    if (!session_) return failure(6, ErrorCode::unknown);
    const Secret key = setupKey(session_->key);
    const auto plain = open(key, "PS-Msg05", Tlv8::find(items, Tag::encryptedData).value_or(QByteArray()));
    paired_ = plain ? introduced(*plain, session_->key, Side::controller) : std::nullopt;
    if (!paired_) return failure(6, ErrorCode::authentication);
    const QByteArray ours = introduction(identity_, session_->key, Side::accessory);
    return message(6, {{Tag::encryptedData, seal(key, "PS-Msg06", ours)}});
}

HapVerifyReceiver::HapVerifyReceiver(Identity identity, std::optional<Peer> known,
                                     const Crypto::RandomSource& random)
    : identity_(std::move(identity)),
      known_(std::move(known)),
      privateKey_(random(Crypto::keySize)),
      publicKey_(Crypto::x25519PublicKey(privateKey_)) {}

QByteArray HapVerifyReceiver::answer(QByteArrayView request) {
    const auto items = Tlv8::parse(request);
    const int state = items ? stateOf(*items) : 0;
    if (state == 1 && !shared_) return present(*items);
    if (state == 3 && !verified_) return check(*items);
    return failure(state + 1, ErrorCode::unknown);
}

QByteArray HapVerifyReceiver::present(const QList<Tlv8::Item>& items) {
    senderKey_ = Tlv8::find(items, Tag::publicKey).value_or(QByteArray());
    shared_ = Crypto::x25519(privateKey_, senderKey_);
    if (!shared_) return failure(2, ErrorCode::unknown);
    const QByteArray ours = evidence(identity_, publicKey_, senderKey_);
    return message(
        2, {{Tag::publicKey, publicKey_}, {Tag::encryptedData, seal(verifyKey(*shared_), "PV-Msg02", ours)}});
}

QByteArray HapVerifyReceiver::check(const QList<Tlv8::Item>& items) {
    if (!shared_) return failure(4, ErrorCode::unknown);
    const QByteArray sealed = Tlv8::find(items, Tag::encryptedData).value_or(QByteArray());
    const auto plain = open(verifyKey(*shared_), "PV-Msg03", sealed);
    if (!plain || !known_ || !isEvidence(*plain, *known_, senderKey_, publicKey_))
        return failure(4, ErrorCode::authentication);
    verified_ = shared_;
    return message(4, {});
}

}  // namespace velmora::test
