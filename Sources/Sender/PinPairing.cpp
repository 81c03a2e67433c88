#include "Sender/PinPairing.h"

#include "Sender/Plist.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

using Outcome = VideoControl::Outcome;

namespace {

PinPairing::Paired failed(ConnectionError error) {
    return {.error = std::move(error)};
}

QVariantMap valuesIn(const Response& reply) {
    return Plist::decode(reply.body).value_or(QVariant()).toMap();
}

/// Receivers that know pairing only by its messages show the PIN at the first of them.
bool showsPinLater(const ConnectionError& error) {
    return error.status == 404 || error.status == 501;
}

}  // namespace

std::shared_ptr<PinPairing> PinPairing::make(Clock& clock, const Receiver& receiver, Flavour flavour) {
    return std::shared_ptr<PinPairing>(new PinPairing(clock, receiver, flavour));
}

PinPairing::PinPairing(Clock& clock, const Receiver& receiver, Flavour flavour)
    : clock_(clock),
      receiver_(receiver),
      flavour_(flavour),
      identity_(makeHapIdentity()),
      setup_(identity_, u"Velmora"_s),
      legacySetup_(makeLegacyIdentity()),
      dialer_(Dialer::make(clock, receiver)) {}

void PinPairing::close() {
    closed_ = true;
    lost_ = {};
    dialer_->close();
    if (messenger_) messenger_->close();
}

QCoro::Task<Outcome> PinPairing::start() {
    const auto self = shared_from_this();
    Dialer::Dialed dialed = co_await dialer_->dial();
    if (closed_) co_return std::unexpected(ConnectionError());
    if (!dialed.channel) co_return std::unexpected(dialed.error);
    QObject::connect(dialed.channel.get(), &Channel::closed, dialed.channel.get(), [weak = weak_from_this()] {
        const auto lost = weak.lock();
        if (lost && lost->lost_) std::exchange(lost->lost_, {})();
    });
    const bool isEncrypted = flavour_ == Flavour::paired;
    const QByteArray identifier = isEncrypted ? identity_.identifier : QByteArray();
    const auto messenger = PairingMessenger::make(clock_, std::move(dialed.channel), receiver_, identifier);
    messenger_ = messenger;

    const PairingRequest request = isEncrypted ? PairingHttp::pinStart : PairingHttp::legacyPinStart;
    const QByteArray nothing;
    const Connection::Answer shown = co_await messenger->ask(request, nothing, PairingStage::pinStart);
    if (!shown && !showsPinLater(shown.error())) co_return std::unexpected(shown.error());
    if (!isEncrypted) co_return Outcome();
    co_return co_await startEncrypted();
}

// At once: a receiver refuses a first message that comes long after it has shown the PIN.
QCoro::Task<Outcome> PinPairing::startEncrypted() {
    const auto self = shared_from_this();
    const auto messenger = messenger_;
    const QByteArray m1 = setup_.start();
    const Connection::Answer m2 = co_await messenger->ask(PairingHttp::setup, m1, PairingStage::setupStart);
    if (!m2) co_return std::unexpected(m2.error());
    const auto challenge = setup_.takeChallenge(m2->body);
    if (!challenge) co_return std::unexpected(pairingFailure(challenge.error()));
    co_return Outcome();
}

QCoro::Task<PinPairing::Paired> PinPairing::finish(QString pin) {
    if (flavour_ == Flavour::paired) return finishEncrypted(std::move(pin));
    return finishLegacy(std::move(pin));
}

QCoro::Task<PinPairing::Paired> PinPairing::finishEncrypted(QString pin) {
    const auto self = shared_from_this();
    const auto messenger = messenger_;
    constexpr PairingRequest request = PairingHttp::setup;
    const auto m3 = setup_.prove(pin);
    if (!m3) co_return failed(pairingFailure(m3.error()));
    const Connection::Answer m4 = co_await messenger->ask(request, *m3, PairingStage::setupProof);
    if (!m4) co_return failed(m4.error());
    const auto m5 = setup_.introduce(m4->body);
    if (!m5) co_return failed(pairingFailure(m5.error()));
    const Connection::Answer m6 = co_await messenger->ask(request, *m5, PairingStage::setupIdentity);
    if (!m6) co_return failed(m6.error());
    auto credentials = setup_.finish(m6->body);
    if (!credentials) co_return failed(pairingFailure(credentials.error()));
    co_return Paired{.pairing = *std::move(credentials)};
}

QCoro::Task<PinPairing::Paired> PinPairing::finishLegacy(QString pin) {
    const auto self = shared_from_this();
    const auto messenger = messenger_;
    constexpr PairingRequest request = PairingHttp::legacyPinSetup;
    const QVariantMap hello{{u"method"_s, u"pin"_s}, {u"user"_s, QString::fromLatin1(legacySetup_.user())}};
    const QByteArray first = Plist::encodeBinary(hello);
    const Connection::Answer challenge = co_await messenger->ask(request, first, PairingStage::setupStart);
    if (!challenge) co_return failed(challenge.error());
    const QVariantMap theirs = valuesIn(*challenge);
    const auto proof =
        legacySetup_.prove(theirs[u"pk"_s].toByteArray(), theirs[u"salt"_s].toByteArray(), pin);
    if (!proof) co_return failed(pairingFailure(proof.error()));

    const QVariantMap ours{{u"pk"_s, proof->pk}, {u"proof"_s, proof->proof}};
    const QByteArray second = Plist::encodeBinary(ours);
    const Connection::Answer proved = co_await messenger->ask(request, second, PairingStage::setupProof);
    if (!proved) co_return failed(proved.error());
    const auto sealed = legacySetup_.introduce(valuesIn(*proved)[u"proof"_s].toByteArray());
    if (!sealed) co_return failed(pairingFailure(sealed.error()));

    const QVariantMap introduction{{u"epk"_s, sealed->epk}, {u"authTag"_s, sealed->authTag}};
    const QByteArray third = Plist::encodeBinary(introduction);
    const Connection::Answer reply = co_await messenger->ask(request, third, PairingStage::setupIdentity);
    if (!reply) co_return failed(reply.error());
    const QVariantMap known = valuesIn(*reply);
    const LegacyPairing::Sealed theirKey{known[u"epk"_s].toByteArray(), known[u"authTag"_s].toByteArray()};
    auto credentials = legacySetup_.finish(theirKey);
    if (!credentials) co_return failed(pairingFailure(credentials.error()));
    co_return Paired{.legacyPairing = *std::move(credentials)};
}

}  // namespace velmora
