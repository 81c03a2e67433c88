#include "Sender/Pairing/Srp.h"

#include <openssl/bn.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace velmora {

namespace {

using Crypto::require;

struct Release {
    void operator()(BIGNUM* number) const { BN_clear_free(number); }
    void operator()(BN_CTX* context) const { BN_CTX_free(context); }
};
using Number = std::unique_ptr<BIGNUM, Release>;
using Scratch = std::unique_ptr<BN_CTX, Release>;

/// RFC 5054, appendix A.
constexpr const char* prime2048 =
    "AC6BDB41324A9A9BF166DE5E1389582FAF72B6651987EE07FC3192943DB56050A37329CBB4A099ED8193E0757767A13D"
    "D52312AB4B03310DCD7F48A9DA04FD50E8083969EDB767B0CF6095179A163AB3661A05FBD5FAAAE82918A9962F0B93B8"
    "55F97993EC975EEAA80D740ADBF4FF747359D041D5C33EA71D281E446B14773BCA97B43A23FB801676BD207A436C6481"
    "F1D2B9078717461A5B9D32E688F87748544523B524B0D57D5EA77A2775D2ECFA032CFBDBF52FB3786160279004E57AE6"
    "AF874E7303CE53299CCC041C7BC308D82A5698F3A8D0C38271AE35F8E9DBFBB694B5C803D89F7AE435DE236D525F5475"
    "9B65E372FCD68EF20FA7111F9E4AFF73";

Number newNumber() {
    Number number(BN_new());
    require(number != nullptr);
    return number;
}

/// Reads big-endian bytes. Powers of it take the same time whatever its bits, since most numbers here are
/// secret.
Number number(QByteArrayView bytes) {
    Number result(
        BN_bin2bn(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()), nullptr));
    require(result != nullptr);
    BN_set_flags(result.get(), BN_FLG_CONSTTIME);
    return result;
}

QByteArrayView stripped(QByteArrayView bytes) {
    while (!bytes.isEmpty() && bytes.front() == 0) bytes = bytes.sliced(1);
    return bytes;
}

/// The numbers modulo one of the primes, and the hash that goes with it.
class Group {
  public:
    explicit Group(SrpVariant variant)
        : hash(variant == SrpVariant::hap ? Crypto::Hash::sha512 : Crypto::Hash::sha1),
          generator(number(QByteArrayView(variant == SrpVariant::hap ? "\5" : "\2", 1))),
          scratch_(BN_CTX_new()) {
        BIGNUM* prime = nullptr;
        // RFC 3526's 3072-bit prime is RFC 5054's.
        if (variant == SrpVariant::hap)
            prime = BN_get_rfc3526_prime_3072(nullptr);
        else
            BN_hex2bn(&prime, prime2048);
        prime_.reset(prime);
        require(prime_ && scratch_);
    }

    [[nodiscard]] Secret bytes(const Number& value) const {
        Secret result(BN_num_bytes(prime_.get()));
        require(BN_bn2binpad(value.get(), result.data(), static_cast<int>(result.size())) == result.size());
        return result;
    }
    [[nodiscard]] Secret prime() const { return bytes(prime_); }
    [[nodiscard]] qsizetype size() const { return BN_num_bytes(prime_.get()); }

    /// base ^ exponent
    [[nodiscard]] Number power(const Number& base, const Number& exponent) const {
        Number result = newNumber();
        require(BN_mod_exp(result.get(), base.get(), exponent.get(), prime_.get(), scratch_.get()) == 1);
        return result;
    }
    [[nodiscard]] Number product(const Number& one, const Number& other) const {
        Number result = newNumber();
        require(BN_mod_mul(result.get(), one.get(), other.get(), prime_.get(), scratch_.get()) == 1);
        return result;
    }
    [[nodiscard]] Number sum(const Number& one, const Number& other) const {
        Number result = newNumber();
        require(BN_mod_add(result.get(), one.get(), other.get(), prime_.get(), scratch_.get()) == 1);
        return result;
    }
    [[nodiscard]] Number difference(const Number& one, const Number& other) const {
        Number result = newNumber();
        require(BN_mod_sub(result.get(), one.get(), other.get(), prime_.get(), scratch_.get()) == 1);
        return result;
    }
    /// factor * other + term, as an exponent: not reduced.
    [[nodiscard]] Number exponent(const Number& factor, const Number& other, const Number& term) const {
        Number result = newNumber();
        require(BN_mul(result.get(), factor.get(), other.get(), scratch_.get()) == 1 &&
                BN_add(result.get(), result.get(), term.get()) == 1);
        BN_set_flags(result.get(), BN_FLG_CONSTTIME);
        return result;
    }

    /// The other side's public key as a full-length array; nothing unless it is between 0 and the prime.
    [[nodiscard]] std::optional<QByteArray> checkedKey(QByteArrayView bytes) const {
        if (bytes.size() > size()) return std::nullopt;
        const Number key = number(bytes);
        if (BN_is_zero(key.get()) || BN_cmp(key.get(), prime_.get()) >= 0) return std::nullopt;
        return this->bytes(key).toByteArray();
    }

    const Crypto::Hash hash;
    const Number generator;

  private:
    Number prime_;
    Scratch scratch_;
};

Secret digest(const Group& group, Crypto::Parts parts) {
    return Crypto::digest(group.hash, parts);
}

/// k, which keeps an impostor from testing two guesses in one go.
Number multiplier(const Group& group) {
    return number(digest(group, {group.prime(), group.bytes(group.generator)}));
}

/// x, the password as an exponent.
Number passwordExponent(const Group& group, const SrpLogin& login) {
    const Secret inner = digest(group, {login.user, ":", login.password});
    return number(digest(group, {login.salt, inner}));
}

/// u, of both public keys at full length; nothing in the case of zero, in which the password would not
/// matter.
std::optional<Number> scrambler(const Group& group, QByteArrayView clientKey, QByteArrayView serverKey) {
    Number result = number(digest(group, {clientKey, serverKey}));
    if (BN_is_zero(result.get())) return std::nullopt;
    return result;
}

Secret sessionKey(const Group& group, SrpVariant variant, const Number& shared) {
    const Secret padded = group.bytes(shared);
    const QByteArrayView bytes = stripped(padded);
    if (variant == SrpVariant::hap) return digest(group, {bytes});
    const Secret first = digest(group, {bytes, QByteArrayView("\0\0\0\0", 4)});
    const Secret second = digest(group, {bytes, QByteArrayView("\0\0\0\1", 4)});
    Secret key(first.size() + second.size());
    std::ranges::copy(QByteArrayView(first), key.data());
    std::ranges::copy(QByteArrayView(second), key.data() + first.size());
    return key;
}

/// H(N) xor H(g), with g as the single byte it is.
Secret groupProof(const Group& group) {
    Secret mixed = digest(group, {group.prime()});
    const Secret generator = digest(group, {stripped(group.bytes(group.generator))});
    const QByteArrayView other = generator;
    for (qsizetype i = 0; i < mixed.size(); ++i) mixed.data()[i] ^= static_cast<uchar>(other[i]);
    return mixed;
}

SrpSession makeSession(const Group& group, const SrpLogin& login, const Secret& key, QByteArrayView clientKey,
                       QByteArrayView serverKey) {
    const QByteArrayView client = stripped(clientKey);
    const Secret userHash = digest(group, {login.user});
    const Secret proof =
        digest(group, {groupProof(group), userHash, login.salt, client, stripped(serverKey), key});
    return {key, proof.toByteArray(), digest(group, {client, proof, key}).toByteArray(),
            digest(group, {clientKey, proof, key}).toByteArray()};
}

QByteArray clientPublicKey(SrpVariant variant, const Secret& privateKey) {
    const Group group(variant);
    return group.bytes(group.power(group.generator, number(privateKey))).toByteArray();
}

}  // namespace

bool SrpSession::isServerProof(QByteArrayView proof) const {
    return Crypto::equal(proof, serverProof) || Crypto::equal(proof, paddedServerProof);
}

SrpClient::SrpClient(SrpVariant variant, Secret privateKey)
    : variant_(variant),
      privateKey_(std::move(privateKey)),
      publicKey_(clientPublicKey(variant_, privateKey_)) {}

SrpClient::SrpClient(SrpVariant variant, const Crypto::RandomSource& random)
    : SrpClient(variant, random(Crypto::keySize)) {
    while (publicKey_.front() == 0) *this = SrpClient(variant, random(Crypto::keySize));
}

std::optional<SrpSession> SrpClient::session(const SrpLogin& login, QByteArrayView serverKey) const {
    const Group group(variant_);
    const std::optional<QByteArray> theirs = group.checkedKey(serverKey);
    if (!theirs) return std::nullopt;
    const std::optional<Number> u = scrambler(group, publicKey_, *theirs);
    if (!u) return std::nullopt;
    const Number x = passwordExponent(group, login);
    const Number mask = group.product(multiplier(group), group.power(group.generator, x));
    const Number base = group.difference(number(*theirs), mask);
    const Number shared = group.power(base, group.exponent(*u, x, number(privateKey_)));
    return makeSession(group, login, sessionKey(group, variant_, shared), publicKey_, *theirs);
}

SrpServer::SrpServer(SrpVariant variant, SrpLogin login, Secret privateKey)
    : variant_(variant), login_(std::move(login)), privateKey_(std::move(privateKey)) {
    const Group group(variant_);
    const Number verifier = group.power(group.generator, passwordExponent(group, login_));
    const Number key = group.sum(group.product(multiplier(group), verifier),
                                 group.power(group.generator, number(privateKey_)));
    publicKey_ = group.bytes(key).toByteArray();
}

std::optional<SrpSession> SrpServer::session(QByteArrayView clientKey) const {
    const Group group(variant_);
    const std::optional<QByteArray> theirs = group.checkedKey(clientKey);
    if (!theirs) return std::nullopt;
    const std::optional<Number> u = scrambler(group, *theirs, publicKey_);
    if (!u) return std::nullopt;
    const Number verifier = group.power(group.generator, passwordExponent(group, login_));
    const Number base = group.product(number(*theirs), group.power(verifier, *u));
    const Number shared = group.power(base, number(privateKey_));
    return makeSession(group, login_, sessionKey(group, variant_, shared), *theirs, publicKey_);
}

}  // namespace velmora
