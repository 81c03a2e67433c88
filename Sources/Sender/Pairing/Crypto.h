#pragma once

#include "Sender/Pairing/Secret.h"

#include <QByteArray>
#include <QByteArrayView>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>

using EVP_CIPHER_CTX = struct evp_cipher_ctx_st;

/// The few primitives that pairing needs, over OpenSSL. Thread-safe. What can fail because of the other
/// side's bytes returns an optional or a bool; a failure that only a broken library can cause ends the
/// program, since going on with keys that are not what they seem would be worse.
namespace velmora::Crypto {

/// Ends the program if `done` is false. For calls into OpenSSL that fail only when it is broken.
void require(bool done);

/// Cryptographically strong bytes.
[[nodiscard]] Secret random(qsizetype size);
/// Where a state machine takes its random bytes from; tests hand in known ones.
using RandomSource = std::function<Secret(qsizetype size)>;

/// Compares without telling by its duration where two byte strings differ. Their lengths are no secret.
[[nodiscard]] bool equal(QByteArrayView one, QByteArrayView other);

enum class Hash { sha1, sha512 };
using Parts = std::initializer_list<QByteArrayView>;
/// The hash of all parts, one after the other. 20 or 64 bytes.
[[nodiscard]] Secret digest(Hash hash, Parts parts);

/// RFC 5869 with SHA-512; 32 bytes.
[[nodiscard]] Secret hkdf(QByteArrayView key, QByteArrayView salt, QByteArrayView info);

constexpr qsizetype tagSize = 16;  ///< of both sealing ciphers

/// ChaCha20-Poly1305 (RFC 8439): `key` 32 bytes, `nonce` 12. The 16-byte tag follows the ciphertext.
[[nodiscard]] QByteArray seal(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain,
                              QByteArrayView additional = {});
/// Nothing if the tag does not fit.
[[nodiscard]] std::optional<QByteArray> open(QByteArrayView key, QByteArrayView nonce, QByteArrayView sealed,
                                             QByteArrayView additional = {});

/// AES-128-GCM with a nonce of 16 bytes instead of the usual 12; the tag follows the ciphertext.
[[nodiscard]] QByteArray sealAes(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain);
[[nodiscard]] std::optional<QByteArray> openAes(QByteArrayView key, QByteArrayView nonce,
                                                QByteArrayView sealed);

/// One AES-128-CTR key stream; each call goes on where the last one ended.
class AesStream {
  public:
    AesStream(QByteArrayView key, QByteArrayView initial);
    [[nodiscard]] QByteArray apply(QByteArrayView bytes);

  private:
    struct Free {
        void operator()(EVP_CIPHER_CTX* context) const;
    };
    std::unique_ptr<EVP_CIPHER_CTX, Free> context_;
};

constexpr qsizetype keySize = 32;  ///< of every X25519 and Ed25519 key, private or public
constexpr qsizetype signatureSize = 64;

[[nodiscard]] QByteArray x25519PublicKey(const Secret& privateKey);
/// Nothing for a key of the wrong length or one of the points that make the result predictable.
[[nodiscard]] std::optional<Secret> x25519(const Secret& privateKey, QByteArrayView theirPublicKey);

[[nodiscard]] QByteArray ed25519PublicKey(const Secret& seed);
[[nodiscard]] QByteArray sign(const Secret& seed, QByteArrayView message);
[[nodiscard]] bool verify(QByteArrayView publicKey, QByteArrayView message, QByteArrayView signature);

}  // namespace velmora::Crypto
