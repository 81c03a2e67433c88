#pragma once

#include "Sender/Pairing/Crypto.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace velmora {

/// What a 401's `WWW-Authenticate: Digest …` asks for (RFC 2617, MD5).
struct DigestChallenge {
    QByteArray realm;
    QByteArray nonce;
    std::optional<QByteArray> opaque;
    bool authQuality = false;  ///< `qop` is offered with "auth" among its values

    /// From the header's value. Nothing if it is another scheme or algorithm, or malformed; unknown fields
    /// are ignored.
    [[nodiscard]] static std::optional<DigestChallenge> parse(QByteArrayView header);
};

/// Answers one challenge, for any number of requests. Every 401 brings a new challenge, and so a new object.
class DigestAnswer {
  public:
    /// Receivers do not look at the user's name, but it enters the hash.
    DigestAnswer(DigestChallenge challenge, const QString& password, const QByteArray& user = "AirPlay",
                 Crypto::RandomSource random = Crypto::random);

    /// The `Authorization` header's value. The answer speaks for `target` without its query: the one common
    /// receiver that compares it cuts the query off first, and could not parse one.
    [[nodiscard]] QByteArray authorization(QByteArrayView method, QByteArrayView target);

  private:
    DigestChallenge challenge_;
    QByteArray user_;
    Secret login_;
    Crypto::RandomSource random_;
    quint32 count_ = 0;
};

}  // namespace velmora
