#pragma once

#include "Sender/Pairing/HapMessages.h"
#include "Sender/Pairing/PairingError.h"
#include "Sender/Pairing/Srp.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// HAP pairing, the sender's side: bytes in, bytes out; the caller carries them. Each object is one attempt,
/// whose functions are called once each, in the order in which they stand; after any error, or out of order,
/// every further call fails with `PairingError::Kind::malformed`.
namespace velmora {

using HapIdentity = HapMessages::Identity;
using HapPeer = HapMessages::Peer;

/// What a pairing leaves behind, to be kept safe: it lets its owner play on that receiver.
struct HapCredentials {
    HapIdentity ours;
    HapPeer theirs;
};

/// A new identity for this sender.
[[nodiscard]] HapIdentity makeHapIdentity(const Crypto::RandomSource& random = Crypto::random);

/// M1 to M4 of pair-setup, which both of its kinds share: proof of a password, and a session key from it.
class HapPasswordProof {
  public:
    HapPasswordProof(PairingStage stage, const Crypto::RandomSource& random);

    [[nodiscard]] QByteArray start() const;
    [[nodiscard]] PairingResult<void> takeChallenge(QByteArrayView m2);
    [[nodiscard]] PairingResult<QByteArray> prove(Secret password);
    /// The session key, 64 bytes.
    [[nodiscard]] PairingResult<Secret> finish(QByteArrayView m4);

  private:
    enum class Step { challenge, prove, finish, over };

    PairingStage stage_;
    Step step_ = Step::challenge;
    SrpClient client_;
    SrpLogin login_;
    QByteArray serverKey_;
    SrpSession session_;
};

/// Pair-setup with the PIN on the receiver's screen.
class HapPinSetup {
  public:
    /// `displayName` is what the receiver calls this sender in its settings; empty for none.
    HapPinSetup(HapIdentity identity, const QString& displayName,
                const Crypto::RandomSource& random = Crypto::random);

    /// M1.
    [[nodiscard]] QByteArray start() const { return proof_.start(); }
    /// After this the user may take a minute to type; the connection has to stay open.
    [[nodiscard]] PairingResult<void> takeChallenge(QByteArrayView m2) { return proof_.takeChallenge(m2); }
    /// M3. White space around the PIN is ignored.
    [[nodiscard]] PairingResult<QByteArray> prove(const QString& pin);
    /// M5. Error `wrongPin` is found out here.
    [[nodiscard]] PairingResult<QByteArray> introduce(QByteArrayView m4);
    [[nodiscard]] PairingResult<HapCredentials> finish(QByteArrayView m6);

  private:
    HapIdentity identity_;
    QByteArray displayName_;
    HapPasswordProof proof_;
    std::optional<Secret> session_;
};

/// Pair-setup without PIN or anything to keep: the session key encrypts this connection.
class HapTransientSetup {
  public:
    explicit HapTransientSetup(const Crypto::RandomSource& random = Crypto::random);

    /// M1.
    [[nodiscard]] QByteArray start() const { return proof_.start(); }
    /// M3. Receivers with an AirPlay password may want that instead.
    [[nodiscard]] PairingResult<QByteArray> prove(
        QByteArrayView m2, const QString& password = QString::fromUtf16(HapMessages::transientPassword));
    /// What the keys of `SecureChannel` are derived from.
    [[nodiscard]] PairingResult<Secret> finish(QByteArrayView m4) { return proof_.finish(m4); }

  private:
    HapPasswordProof proof_;
};

/// Pair-verify: both sides show that they are the paired ones, and agree on new keys for this connection.
class HapVerify {
  public:
    explicit HapVerify(HapCredentials credentials, const Crypto::RandomSource& random = Crypto::random);

    /// M1.
    [[nodiscard]] QByteArray start() const;
    /// M3. Error `untrusted`: it is another receiver, or an impostor.
    [[nodiscard]] PairingResult<QByteArray> prove(QByteArrayView m2);
    /// What the keys of `SecureChannel` are derived from. Error `forgotten`: pair again.
    [[nodiscard]] PairingResult<Secret> finish(QByteArrayView m4);

  private:
    enum class Step { prove, finish, over };

    HapCredentials credentials_;
    Secret privateKey_;
    QByteArray publicKey_;
    Secret shared_;
    Step step_ = Step::prove;
};

}  // namespace velmora
