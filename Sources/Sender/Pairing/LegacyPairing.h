#pragma once

#include "Sender/Pairing/Crypto.h"
#include "Sender/Pairing/PairingError.h"
#include "Sender/Pairing/Srp.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// The pairing of receivers before HAP, the sender's side: bytes in, bytes out. The structs hold the values
/// of the property lists' keys of the same names. One object is one attempt, as in HapPairing.h.
namespace velmora {

struct LegacyIdentity {
    QByteArray user;  ///< 16 hexadecimal digits
    Secret seed;      ///< Ed25519
    [[nodiscard]] QByteArray publicKey() const { return Crypto::ed25519PublicKey(seed); }
};
[[nodiscard]] LegacyIdentity makeLegacyIdentity(const Crypto::RandomSource& random = Crypto::random);

/// What a pairing leaves behind, to be kept safe.
struct LegacyCredentials {
    LegacyIdentity ours;
    QByteArray theirPublicKey;  ///< Ed25519
};

/// The formulas that both sides share.
namespace LegacyPairing {
enum class Side { sender, receiver };

struct Sealed {
    QByteArray epk;      ///< an Ed25519 public key, encrypted
    QByteArray authTag;  ///< 16 bytes
};
/// How the one side tells the other its long-term key at the end of a PIN setup.
[[nodiscard]] Sealed seal(const Secret& session, Side from, QByteArrayView publicKey);
[[nodiscard]] std::optional<QByteArray> open(const Secret& session, Side from, const Sealed& sealed);

/// The stream under which first the receiver's signature, then the sender's travels during verification.
[[nodiscard]] Crypto::AesStream verifyStream(const Secret& shared);
}  // namespace LegacyPairing

/// Pairing with the PIN on the receiver's screen, which takes three requests.
class LegacyPinSetup {
  public:
    struct Proof {
        QByteArray pk;     ///< 256 bytes
        QByteArray proof;  ///< 20 bytes
    };

    explicit LegacyPinSetup(LegacyIdentity identity, const Crypto::RandomSource& random = Crypto::random);

    /// The first request's `user`; its `method` is "pin".
    [[nodiscard]] const QByteArray& user() const { return identity_.user; }
    /// The second request, from the first reply's values and the PIN.
    [[nodiscard]] PairingResult<Proof> prove(QByteArrayView pk, QByteArrayView salt, const QString& pin);
    /// The third, from the second reply's.
    [[nodiscard]] PairingResult<LegacyPairing::Sealed> introduce(QByteArrayView proof);
    [[nodiscard]] PairingResult<LegacyCredentials> finish(const LegacyPairing::Sealed& reply);

  private:
    enum class Step { prove, introduce, finish, over };

    LegacyIdentity identity_;
    SrpClient client_;
    SrpSession session_;
    Step step_ = Step::prove;
};

/// Pairing without PIN: each side just sends its public key. `reply` is the receiver's.
[[nodiscard]] PairingResult<LegacyCredentials> legacyKeyExchange(const LegacyIdentity& identity,
                                                                 QByteArrayView reply);

/// Proof of an old pairing, in two requests; on every connection that is to carry commands.
class LegacyVerify {
  public:
    explicit LegacyVerify(LegacyCredentials credentials, const Crypto::RandomSource& random = Crypto::random);

    [[nodiscard]] QByteArray start() const;
    /// The second request; its reply has a status only.
    [[nodiscard]] PairingResult<QByteArray> prove(QByteArrayView reply);

  private:
    LegacyCredentials credentials_;
    Secret privateKey_;
    QByteArray publicKey_;
    bool over_ = false;
};

}  // namespace velmora
