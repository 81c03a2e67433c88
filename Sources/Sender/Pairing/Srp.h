#pragma once

#include "Sender/Pairing/Crypto.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace velmora {

/// The two forms of SRP-6a (RFC 5054) that receivers speak.
enum class SrpVariant {
    hap,     ///< 3072-bit group, g = 5, SHA-512, session key H(S)
    legacy,  ///< 2048-bit group, g = 2, SHA-1, session key H(S | 0) | H(S | 1)
};

/// What both sides have in common after a handshake, if they started from the same password.
struct SrpSession {
    Secret key;
    QByteArray clientProof;
    QByteArray serverProof;
    /// Receivers disagree on whether the client's public key enters the server's proof with its leading zero
    /// bytes; the two differ only when it has any.
    QByteArray paddedServerProof;

    [[nodiscard]] bool isServerProof(QByteArrayView proof) const;
};

/// Who logs in with what. The password is text: "0042" is not "42".
struct SrpLogin {
    QByteArray user;
    Secret password;
    QByteArray salt;
};

/// The side that proves that it knows the password.
class SrpClient {
  public:
    /// Draws a private key whose public key has no leading zero bytes, because receivers disagree on those.
    explicit SrpClient(SrpVariant variant, const Crypto::RandomSource& random = Crypto::random);
    SrpClient(SrpVariant variant, Secret privateKey);

    /// As long as the group's prime.
    [[nodiscard]] const QByteArray& publicKey() const { return publicKey_; }

    /// Nothing if the server's public key is out of range or makes the result predictable.
    [[nodiscard]] std::optional<SrpSession> session(const SrpLogin& login, QByteArrayView serverKey) const;

  private:
    SrpVariant variant_;
    Secret privateKey_;
    QByteArray publicKey_;
};

/// The side that checks it.
class SrpServer {
  public:
    SrpServer(SrpVariant variant, SrpLogin login, Secret privateKey);

    [[nodiscard]] const QByteArray& publicKey() const { return publicKey_; }
    /// The caller compares the client's proof. Nothing as for the client.
    [[nodiscard]] std::optional<SrpSession> session(QByteArrayView clientKey) const;

  private:
    SrpVariant variant_;
    SrpLogin login_;
    Secret privateKey_;
    QByteArray publicKey_;
};

}  // namespace velmora
