// The first byte chooses who gets the rest as a message. Nobody without the receiver's key gets through.
#include "Sender/Pairing/Digest.h"
#include "Sender/Pairing/HapPairing.h"
#include "Sender/Pairing/LegacyPairing.h"
#include "Television/Pairing/HapReceiver.h"
#include "Television/Pairing/LegacyReceiver.h"

#include <array>
#include <cstdlib>

namespace {

using namespace velmora;

void require(bool holds) {
    if (!holds) std::abort();
}

/// Any outcome will do, as long as there is one.
void ignore(const auto& /*result*/) {}

Secret fixed(qsizetype size) {
    return Secret(QByteArrayView(QByteArray(size, '\x2A')));
}

HapIdentity ours() {
    return {"us", fixed(32)};
}

HapIdentity theirs() {
    return {"them", Secret(QByteArrayView(QByteArray(32, '\x17')))};
}

HapPeer them() {
    return {theirs().identifier, theirs().publicKey()};
}

/// A pair-setup that waits for M2, for M4 or for M6. Made once, because it takes long.
struct Setups {
    HapPinSetup challenge{ours(), QStringLiteral("us"), fixed};
    HapPinSetup proof = challenge;
    HapPinSetup identity = challenge;

    Setups() {
        test::HapSetupReceiver receiver(theirs(), QStringLiteral("0042"), fixed);
        require(proof.takeChallenge(receiver.answer(proof.start())).has_value());
        const QByteArray m4 = receiver.answer(*proof.prove(QStringLiteral("0042")));
        identity = proof;
        require(identity.introduce(m4).has_value());
    }
};

const Setups& setups() {
    static const Setups made;
    return made;
}

void takeChallenge(QByteArrayView message) {
    HapPinSetup setup = setups().challenge;
    if (setup.takeChallenge(message)) ignore(setup.prove(QStringLiteral("1")));
}

void takeProof(QByteArrayView message) {
    ignore(HapPinSetup(setups().proof).introduce(message));
}

void takeIdentity(QByteArrayView message) {
    const auto credentials = HapPinSetup(setups().identity).finish(message);
    require(!credentials || credentials->theirs == them());
}

void takeIntroduction(QByteArrayView message) {
    require(!HapMessages::introduced(message, fixed(64), HapMessages::Side::accessory));
}

void takeVerification(QByteArrayView message) {
    HapVerify verify({ours(), them()}, fixed);
    ignore(verify.prove(message));
    ignore(verify.finish(message));
}

void takeEvidence(QByteArrayView message) {
    require(!HapMessages::isEvidence(message, them(), QByteArray(32, 'a'), QByteArray(32, 'b')));
}

void takeLegacy(QByteArrayView message) {
    LegacyVerify verify({{"us", fixed(32)}, them().publicKey}, fixed);
    require(!verify.prove(message));
    test::LegacyVerifyReceiver receiver(theirs().seed, std::nullopt, fixed);
    ignore(receiver.answer(message));
    require(!receiver.isVerified());
}

void takeRequest(QByteArrayView message) {
    test::HapSetupReceiver setup(theirs(), QStringLiteral("0042"), fixed);
    ignore(setup.answer(message));
    test::HapVerifyReceiver verify(theirs(), HapPeer{"us", ours().publicKey()}, fixed);
    ignore(verify.answer(message));
    require(!setup.paired() && !verify.shared());
}

void takeDigest(QByteArrayView message) {
    const auto challenge = DigestChallenge::parse(message);
    if (!challenge) return;
    const QByteArray header =
        DigestAnswer(*challenge, QStringLiteral("p")).authorization("POST", "/play?a=b");
    require(!header.contains('\r') && !header.contains('\n') && !header.contains('\0'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::array readers{takeChallenge, takeProof,  takeIdentity, takeIntroduction, takeVerification,
                                 takeEvidence,  takeLegacy, takeRequest,  takeDigest};
    if (size == 0) return 0;
    readers[data[0] % readers.size()](QByteArrayView(data + 1, static_cast<qsizetype>(size) - 1));
    return 0;
}
