#pragma once

#include "Sender/Pairing/LegacyPairing.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// The receiver's side of the pairing before HAP. Where these answer nothing, the receiver says 470.
namespace velmora::test {

class LegacySetupReceiver {
  public:
    struct Challenge {
        QByteArray pk;
        QByteArray salt;
    };

    LegacySetupReceiver(Secret seed, const QString& pin, Crypto::RandomSource random = Crypto::random);

    [[nodiscard]] Challenge challenge(const QByteArray& user);
    [[nodiscard]] std::optional<QByteArray> check(const LegacyPinSetup::Proof& proof);
    [[nodiscard]] std::optional<LegacyPairing::Sealed> exchange(const LegacyPairing::Sealed& sealed);

    /// The sender's public key, once it has paired.
    [[nodiscard]] const std::optional<QByteArray>& paired() const { return paired_; }

  private:
    Secret seed_;
    QString pin_;
    Crypto::RandomSource random_;
    std::optional<SrpServer> server_;
    std::optional<SrpSession> session_;
    std::optional<QByteArray> paired_;
};

/// Verification of the one sender that is known, or of any if none is named.
class LegacyVerifyReceiver {
  public:
    LegacyVerifyReceiver(Secret seed, std::optional<QByteArray> known,
                         const Crypto::RandomSource& random = Crypto::random);

    /// The replies to both requests in turn; the second one's is empty.
    [[nodiscard]] std::optional<QByteArray> answer(QByteArrayView request);
    [[nodiscard]] bool isVerified() const { return verified_; }

  private:
    [[nodiscard]] std::optional<QByteArray> present(QByteArrayView keys);
    [[nodiscard]] bool check(QByteArrayView sealedSignature);

    Secret seed_;
    std::optional<QByteArray> known_;
    Secret privateKey_;
    QByteArray publicKey_;
    QByteArray senderKey_;
    QByteArray senderIdentity_;
    std::optional<Crypto::AesStream> stream_;
    bool verified_ = false;
};

}  // namespace velmora::test
