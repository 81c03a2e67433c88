#include "Sender/Pairing/Crypto.h"

#include <QDebug>

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <array>
#include <limits>

namespace velmora::Crypto {

namespace {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* pointer) const {
        release(pointer);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Release<EVP_PKEY_CTX_free>>;
using HashContext = std::unique_ptr<EVP_MD_CTX, Release<EVP_MD_CTX_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Release<EVP_CIPHER_CTX_free>>;

const uchar* raw(QByteArrayView bytes) {
    return reinterpret_cast<const uchar*>(bytes.data());
}

uchar* raw(QByteArray& bytes) {
    return reinterpret_cast<uchar*>(bytes.data());
}

size_t length(QByteArrayView bytes) {
    return static_cast<size_t>(bytes.size());
}

int intLength(QByteArrayView bytes) {
    require(bytes.size() <= std::numeric_limits<int>::max());
    return static_cast<int>(bytes.size());
}

struct Sealing {
    const EVP_CIPHER* cipher;
    qsizetype keyBytes;
    int nonceBytes;
};

enum class Direction { decrypt = 0, encrypt = 1 };

CipherContext sealingContext(const Sealing& sealing, Direction direction, QByteArrayView key,
                             QByteArrayView nonce) {
    require(key.size() == sealing.keyBytes && nonce.size() == sealing.nonceBytes);
    CipherContext context(EVP_CIPHER_CTX_new());
    const int encrypt = static_cast<int>(direction);
    // The nonce's length has to be known before the nonce is.
    require(context &&
            EVP_CipherInit_ex(context.get(), sealing.cipher, nullptr, nullptr, nullptr, encrypt) == 1);
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_IVLEN, sealing.nonceBytes, nullptr) == 1);
    require(EVP_CipherInit_ex(context.get(), nullptr, nullptr, raw(key), raw(nonce), encrypt) == 1);
    return context;
}

void update(EVP_CIPHER_CTX* context, uchar* output, QByteArrayView input) {
    int written = 0;
    if (!input.isEmpty())
        require(EVP_CipherUpdate(context, output, &written, raw(input), intLength(input)) == 1);
}

QByteArray sealWith(const Sealing& sealing, QByteArrayView key, QByteArrayView nonce, QByteArrayView plain,
                    QByteArrayView additional) {
    const CipherContext context = sealingContext(sealing, Direction::encrypt, key, nonce);
    QByteArray sealed(plain.size() + tagSize, Qt::Uninitialized);
    update(context.get(), nullptr, additional);
    update(context.get(), raw(sealed), plain);
    uchar* tag = raw(sealed) + plain.size();
    int written = 0;
    require(EVP_CipherFinal_ex(context.get(), tag, &written) == 1);
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, tagSize, tag) == 1);
    return sealed;
}

std::optional<QByteArray> openWith(const Sealing& sealing, QByteArrayView key, QByteArrayView nonce,
                                   QByteArrayView sealed, QByteArrayView additional) {
    if (sealed.size() < tagSize) return std::nullopt;
    const CipherContext context = sealingContext(sealing, Direction::decrypt, key, nonce);
    QByteArray tag = sealed.last(tagSize).toByteArray();
    QByteArray plain(sealed.size() - tagSize, Qt::Uninitialized);
    update(context.get(), nullptr, additional);
    update(context.get(), raw(plain), sealed.chopped(tagSize));
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) == 1);
    std::array<uchar, tagSize> rest{};
    int written = 0;
    if (EVP_CipherFinal_ex(context.get(), rest.data(), &written) != 1) return std::nullopt;
    return plain;
}

Sealing chaCha() {
    return {EVP_chacha20_poly1305(), 32, 12};
}

Sealing aesGcm() {
    return {EVP_aes_128_gcm(), 16, 16};
}

Key privateKeyOf(int type, const Secret& bytes) {
    require(bytes.size() == keySize);
    Key key(EVP_PKEY_new_raw_private_key(type, nullptr, raw(bytes), keySize));
    require(key != nullptr);
    return key;
}

Key publicKeyOf(int type, QByteArrayView bytes) {
    if (bytes.size() != keySize) return nullptr;
    return Key(EVP_PKEY_new_raw_public_key(type, nullptr, raw(bytes), keySize));
}

QByteArray rawPublicKey(const Key& key) {
    QByteArray bytes(keySize, Qt::Uninitialized);
    size_t size = keySize;
    require(EVP_PKEY_get_raw_public_key(key.get(), raw(bytes), &size) == 1);
    return bytes;
}

OSSL_PARAM octets(const char* name, QByteArrayView value) {
    // OpenSSL's parameter list has no const; it reads only.
    return OSSL_PARAM_construct_octet_string(name, const_cast<char*>(value.data()), length(value));
}

}  // namespace

void require(bool done) {
    if (!done) qFatal("The cryptographic library failed");
}

Secret random(qsizetype size) {
    Secret bytes(size);
    require(RAND_bytes(bytes.data(), static_cast<int>(size)) == 1);
    return bytes;
}

bool equal(QByteArrayView one, QByteArrayView other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), length(one)) == 0;
}

Secret digest(Hash hash, Parts parts) {
    const EVP_MD* algorithm = hash == Hash::sha1 ? EVP_sha1() : EVP_sha512();
    const HashContext context(EVP_MD_CTX_new());
    require(context && EVP_DigestInit_ex(context.get(), algorithm, nullptr) == 1);
    for (const QByteArrayView part : parts)
        require(EVP_DigestUpdate(context.get(), part.data(), length(part)) == 1);
    Secret result(EVP_MD_get_size(algorithm));
    require(EVP_DigestFinal_ex(context.get(), result.data(), nullptr) == 1);
    return result;
}

Secret hkdf(QByteArrayView key, QByteArrayView salt, QByteArrayView info) {
    const std::unique_ptr<EVP_KDF, Release<EVP_KDF_free>> function(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
    const std::unique_ptr<EVP_KDF_CTX, Release<EVP_KDF_CTX_free>> context(EVP_KDF_CTX_new(function.get()));
    char hash[] = "SHA512";
    const std::array<OSSL_PARAM, 5> parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, hash, 0), octets(OSSL_KDF_PARAM_KEY, key),
        octets(OSSL_KDF_PARAM_SALT, salt), octets(OSSL_KDF_PARAM_INFO, info), OSSL_PARAM_construct_end()};
    Secret result(keySize);
    require(context && EVP_KDF_derive(context.get(), result.data(), keySize, parameters.data()) == 1);
    return result;
}

QByteArray seal(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain, QByteArrayView additional) {
    return sealWith(chaCha(), key, nonce, plain, additional);
}

std::optional<QByteArray> open(QByteArrayView key, QByteArrayView nonce, QByteArrayView sealed,
                               QByteArrayView additional) {
    return openWith(chaCha(), key, nonce, sealed, additional);
}

QByteArray sealAes(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain) {
    return sealWith(aesGcm(), key, nonce, plain, {});
}

std::optional<QByteArray> openAes(QByteArrayView key, QByteArrayView nonce, QByteArrayView sealed) {
    return openWith(aesGcm(), key, nonce, sealed, {});
}

void AesStream::Free::operator()(EVP_CIPHER_CTX* context) const {
    EVP_CIPHER_CTX_free(context);
}

AesStream::AesStream(QByteArrayView key, QByteArrayView initial) : context_(EVP_CIPHER_CTX_new()) {
    require(context_ && key.size() == 16 && initial.size() == 16);
    require(EVP_EncryptInit_ex(context_.get(), EVP_aes_128_ctr(), nullptr, raw(key), raw(initial)) == 1);
}

QByteArray AesStream::apply(QByteArrayView bytes) {
    QByteArray result(bytes.size(), Qt::Uninitialized);
    update(context_.get(), raw(result), bytes);
    return result;
}

QByteArray x25519PublicKey(const Secret& privateKey) {
    return rawPublicKey(privateKeyOf(EVP_PKEY_X25519, privateKey));
}

std::optional<Secret> x25519(const Secret& privateKey, QByteArrayView theirPublicKey) {
    const Key ours = privateKeyOf(EVP_PKEY_X25519, privateKey);
    const Key theirs = publicKeyOf(EVP_PKEY_X25519, theirPublicKey);
    if (!theirs) return std::nullopt;
    const KeyContext context(EVP_PKEY_CTX_new(ours.get(), nullptr));
    require(context && EVP_PKEY_derive_init(context.get()) == 1);
    if (EVP_PKEY_derive_set_peer(context.get(), theirs.get()) != 1) return std::nullopt;
    Secret shared(keySize);
    size_t size = keySize;
    // Fails when the shared value is all zero, which is what points of small order lead to.
    if (EVP_PKEY_derive(context.get(), shared.data(), &size) != 1) return std::nullopt;
    return shared;
}

QByteArray ed25519PublicKey(const Secret& seed) {
    return rawPublicKey(privateKeyOf(EVP_PKEY_ED25519, seed));
}

QByteArray sign(const Secret& seed, QByteArrayView message) {
    const Key key = privateKeyOf(EVP_PKEY_ED25519, seed);
    const HashContext context(EVP_MD_CTX_new());
    QByteArray signature(signatureSize, Qt::Uninitialized);
    size_t size = signatureSize;
    require(context && EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1);
    require(EVP_DigestSign(context.get(), raw(signature), &size, raw(message), length(message)) == 1);
    return signature;
}

bool verify(QByteArrayView publicKey, QByteArrayView message, QByteArrayView signature) {
    const Key key = publicKeyOf(EVP_PKEY_ED25519, publicKey);
    if (!key || signature.size() != signatureSize) return false;
    const HashContext context(EVP_MD_CTX_new());
    require(context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1);
    return EVP_DigestVerify(context.get(), raw(signature), length(signature), raw(message),
                            length(message)) == 1;
}

}  // namespace velmora::Crypto
