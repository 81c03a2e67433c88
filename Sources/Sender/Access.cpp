#include "Sender/Access.h"

#include "Diagnostics/Log.h"
#include "Sender/PairingMessenger.h"
#include "Sender/SealedChannel.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Kind = ConnectionError::Kind;

Access::Link failed(ConnectionError error) {
    return {.connection = nullptr, .shared = {}, .error = std::move(error)};
}

Access::Link failed(const PairingError& error) {
    return failed(pairingFailure(error));
}

QString usualTransientPassword() {
    return QString::fromUtf16(HapMessages::transientPassword);
}

}  // namespace

std::shared_ptr<Access> Access::make(Clock& clock, const Receiver& receiver, Flavour flavour,
                                     Credentials credentials) {
    return std::shared_ptr<Access>(new Access(clock, receiver, flavour, std::move(credentials)));
}

Access::Access(Clock& clock, const Receiver& receiver, Flavour flavour, Credentials credentials)
    : clock_(clock),
      receiver_(receiver),
      flavour_(flavour),
      credentials_(std::move(credentials)),
      dialer_(Dialer::make(clock, receiver)) {}

void Access::close() {
    closed_ = true;
    dialer_->close();
    if (messenger_) messenger_->close();
}

QCoro::Task<Dialer::Dialed> Access::dial(quint16 port) {
    return dialer_->dial(port);
}

QCoro::Task<Access::Link> Access::link() {
    const auto self = shared_from_this();
    const QString usual = usualTransientPassword();
    Link first = co_await attempt(usual);
    if (first.connection || closed_ || !mayHaveErred(first.error)) co_return std::move(first);
    logger().notice(u"television: the proof failed, giving it once more"_s);
    const bool triesOwn = flavour_ == Flavour::transient && !credentials_.password.isEmpty();
    const QString password = triesOwn ? credentials_.password : usual;
    Link second = co_await attempt(password);
    co_return std::move(second);
}

bool Access::mayHaveErred(const ConnectionError& error) const {
    if (error.step != Answers::Step::pairing) return false;
    if (error.kind == Kind::closed) return true;
    if (error.kind != Kind::pairing) return false;
    switch (error.pairing.kind) {
        case PairingError::Kind::forgotten:
        case PairingError::Kind::wrongPin:
            return true;
        case PairingError::Kind::pinNeeded:
            // Said of a wrong proof, too; a receiver with a password may want that as the proof.
            return error.status == 0 || !credentials_.password.isEmpty();
        default:
            return false;
    }
}

QCoro::Task<Access::Link> Access::attempt(QString transientPassword) {
    const auto self = shared_from_this();
    Dialer::Dialed dialed = co_await dialer_->dial();
    if (closed_) co_return failed(ConnectionError());
    if (!dialed.channel) co_return failed(dialed.error);
    const QByteArray identifier = flavour_ == Flavour::paired && credentials_.pairing
                                      ? credentials_.pairing->ours.identifier
                                      : QByteArray();
    const Messenger messenger =
        PairingMessenger::make(clock_, std::move(dialed.channel), receiver_, identifier);
    messenger_ = messenger;
    switch (flavour_) {
        case Flavour::plain:
            co_return ready(messenger);
        case Flavour::legacyKeys:
            co_return co_await exchangeKeys(messenger);
        case Flavour::legacyPin:
            if (!credentials_.legacyPairing) break;
            co_return co_await verifyLegacy(messenger, *credentials_.legacyPairing);
        case Flavour::transient:
            co_return co_await setUpTransient(messenger, transientPassword);
        case Flavour::paired:
            if (!credentials_.pairing) break;
            co_return co_await verify(messenger);
    }
    co_return failed(PairingError{PairingError::Kind::pinNeeded});
}

QCoro::Task<Access::Link> Access::verify(Messenger messenger) {
    const auto self = shared_from_this();
    HapVerify proof(*credentials_.pairing);
    const QByteArray m1 = proof.start();
    const Connection::Answer m2 = co_await messenger->ask(PairingHttp::verify, m1, PairingStage::verify);
    if (!m2) co_return failed(m2.error());
    const auto m3 = proof.prove(m2->body);
    if (!m3) co_return failed(m3.error());
    const Connection::Answer m4 = co_await messenger->ask(PairingHttp::verify, *m3, PairingStage::verify);
    if (!m4) co_return failed(m4.error());
    const auto shared = proof.finish(m4->body);
    if (!shared) co_return failed(shared.error());
    co_return sealed(messenger, *shared);
}

QCoro::Task<Access::Link> Access::setUpTransient(Messenger messenger, QString password) {
    const auto self = shared_from_this();
    constexpr PairingRequest request = PairingHttp::transientSetup;
    constexpr auto stage = PairingStage::transient;
    HapTransientSetup setup;
    const QByteArray m1 = setup.start();
    const Connection::Answer m2 = co_await messenger->ask(request, m1, stage);
    if (!m2) co_return failed(m2.error());
    const auto m3 = setup.prove(m2->body, password);
    if (!m3) co_return failed(m3.error());
    const Connection::Answer m4 = co_await messenger->ask(request, *m3, stage);
    if (!m4) co_return failed(m4.error());
    const auto shared = setup.finish(m4->body);
    if (!shared) co_return failed(shared.error());
    co_return sealed(messenger, *shared);
}

QCoro::Task<Access::Link> Access::exchangeKeys(Messenger messenger) {
    const auto self = shared_from_this();
    // The same for all connections of this access: to the receiver they are one sender.
    if (!credentials_.legacyPairing) credentials_.legacyPairing = {makeLegacyIdentity(), {}};
    const LegacyIdentity identity = credentials_.legacyPairing->ours;
    const QByteArray key = identity.publicKey();
    const Connection::Answer reply =
        co_await messenger->ask(PairingHttp::legacyKeyExchange, key, PairingStage::transient);
    if (!reply) co_return failed(reply.error());
    const auto credentials = legacyKeyExchange(identity, reply->body);
    if (!credentials) co_return failed(credentials.error());
    co_return co_await verifyLegacy(messenger, *credentials);
}

QCoro::Task<Access::Link> Access::verifyLegacy(Messenger messenger, LegacyCredentials credentials) {
    const auto self = shared_from_this();
    constexpr PairingRequest request = PairingHttp::legacyVerify;
    LegacyVerify proof(credentials);
    const QByteArray start = proof.start();
    const Connection::Answer theirs = co_await messenger->ask(request, start, PairingStage::verify);
    if (!theirs) co_return failed(theirs.error());
    const auto ours = proof.prove(theirs->body);
    if (!ours) co_return failed(ours.error());
    const Connection::Answer verdict = co_await messenger->ask(request, *ours, PairingStage::verify);
    if (!verdict) co_return failed(verdict.error());
    co_return ready(messenger);
}

Access::Link Access::ready(const Messenger& messenger) const {
    auto connection = messenger->take();
    if (!connection || !connection->isOpen()) return failed(ConnectionError());
    connection->setPassword(credentials_.password);
    return {.connection = std::move(connection), .shared = {}, .error = {}};
}

Access::Link Access::sealed(const Messenger& messenger, const Secret& shared) const {
    const auto open = messenger->take();
    if (!open) return failed(ConnectionError());
    auto [channel, unread] = open->release();
    if (!channel) return failed(ConnectionError());
    auto sealing =
        std::make_unique<SealedChannel>(std::move(channel), SecureChannel::control(shared), unread);
    auto connection = std::make_unique<Connection>(clock_, std::move(sealing));
    connection->setPassword(credentials_.password);
    return {.connection = std::move(connection), .shared = shared, .error = {}};
}

}  // namespace velmora
