#pragma once

#include "Sender/Pairing/HapMessages.h"
#include "Sender/Pairing/Srp.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <optional>

/// The receiver's side of HAP pairing: every request gets an answer, errors included; one object a
/// connection.
namespace velmora::test {

/// Pair-setup, with PIN or transient as the sender asks for.
class HapSetupReceiver {
  public:
    HapSetupReceiver(HapMessages::Identity identity, const QString& pin,
                     Crypto::RandomSource random = Crypto::random);

    /// Answers every M1 with this error, and `wait` if it is not zero.
    void refuse(HapMessages::ErrorCode error, std::chrono::seconds wait = {});
    void refuseTransient() { takesTransient_ = false; }

    [[nodiscard]] QByteArray answer(QByteArrayView request);

    /// Who has paired, after M6.
    [[nodiscard]] const std::optional<HapMessages::Peer>& paired() const { return paired_; }
    /// The key of the connection, after a transient M4.
    [[nodiscard]] const std::optional<Secret>& transientKey() const { return transientKey_; }

  private:
    using Items = QList<Tlv8::Item>;
    [[nodiscard]] QByteArray challenge(const Items& items);
    [[nodiscard]] QByteArray checkProof(const Items& items);
    [[nodiscard]] QByteArray exchange(const Items& items);

    HapMessages::Identity identity_;
    QString pin_;
    Crypto::RandomSource random_;
    Items refusal_;
    bool takesTransient_ = true;
    bool transient_ = false;
    char state_ = 1;
    std::optional<SrpServer> server_;
    std::optional<SrpSession> session_;
    std::optional<HapMessages::Peer> paired_;
    std::optional<Secret> transientKey_;
};

/// Pair-verify against the one sender that is known, if any.
class HapVerifyReceiver {
  public:
    HapVerifyReceiver(HapMessages::Identity identity, std::optional<HapMessages::Peer> known,
                      const Crypto::RandomSource& random = Crypto::random);

    [[nodiscard]] QByteArray answer(QByteArrayView request);

    /// What the connection's keys are derived from, after M4.
    [[nodiscard]] const std::optional<Secret>& shared() const { return verified_; }

  private:
    [[nodiscard]] QByteArray present(const QList<Tlv8::Item>& items);
    [[nodiscard]] QByteArray check(const QList<Tlv8::Item>& items);

    HapMessages::Identity identity_;
    std::optional<HapMessages::Peer> known_;
    Secret privateKey_;
    QByteArray publicKey_;
    QByteArray senderKey_;
    std::optional<Secret> shared_;
    std::optional<Secret> verified_;
};

}  // namespace velmora::test
