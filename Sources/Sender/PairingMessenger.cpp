#include "Sender/PairingMessenger.h"

#include "Sender/Receiver.h"

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// The receiver's arithmetic alone may take seconds on an old one; a computer asks its user before it shows
// anything.
constexpr Clock::Duration answerDeadline = 10s;
constexpr Clock::Duration consentDeadline = 30s;

// One receiver knows the verbs of pairing only with the other request line, and gives away nothing else of
// itself than this version.
bool wantsRtsp(const Receiver& receiver) {
    return receiver.announced && receiver.announced->systemVersion.isEmpty() &&
           receiver.announced->sourceVersion == "220.68"_L1;
}

}  // namespace

ConnectionError pairingFailure(const PairingError& error) {
    return {.kind = ConnectionError::Kind::pairing, .step = Answers::Step::pairing, .pairing = error};
}

std::shared_ptr<PairingMessenger> PairingMessenger::make(Clock& clock, std::unique_ptr<Channel> channel,
                                                         const Receiver& receiver, QByteArray identifier) {
    auto connection = std::make_unique<Connection>(clock, std::move(channel));
    return std::shared_ptr<PairingMessenger>(
        new PairingMessenger(std::move(connection), wantsRtsp(receiver), std::move(identifier)));
}

PairingMessenger::PairingMessenger(std::unique_ptr<Connection> connection, bool speaksRtsp,
                                   QByteArray identifier)
    : connection_(std::move(connection)), speaksRtsp_(speaksRtsp), identifier_(std::move(identifier)) {}

QCoro::Task<Connection::Answer> PairingMessenger::ask(PairingRequest what, QByteArray body,
                                                      PairingStage stage) {
    const auto self = shared_from_this();
    Connection::Answer answer = co_await send(what, body, stage);
    const bool isUnknownVerb = answer && (answer->status == 404 || answer->status == 501);
    if (isUnknownVerb && what.homeKitPairing == 0 && !std::exchange(speaksRtsp_, true))
        answer = co_await send(what, body, stage);

    const bool isPinStart = stage == PairingStage::pinStart;
    const auto step = isPinStart ? Answers::Step::showPin : Answers::Step::pairing;
    if (!answer) {
        answer.error().step = step;
        co_return answer;
    }
    const std::optional<PairingError> refusal = pairingErrorFromStatus(answer->status, stage);
    if (!refusal) co_return answer;
    ConnectionError error = pairingFailure(*refusal);
    error.step = step;
    error.status = answer->status;
    error.detail = u"%1 answered %2"_s.arg(QLatin1StringView(what.path)).arg(answer->status);
    co_return std::unexpected(error);
}

QCoro::Task<Connection::Answer> PairingMessenger::send(PairingRequest what, QByteArray body,
                                                       PairingStage stage) {
    if (!connection_) co_return std::unexpected(ConnectionError{});
    Request request;
    request.method = "POST";
    request.target = what.path;
    request.headers = {{"User-Agent", PairingHttp::userAgent},
                       {"Connection", "keep-alive"},
                       {"X-Apple-Client-Name", "Velmora"}};
    if (!identifier_.isEmpty()) request.headers.append("X-Apple-Client-ID", identifier_);
    if (what.homeKitPairing != 0)
        request.headers.append("X-Apple-HKP", QByteArray::number(what.homeKitPairing));
    if (!body.isEmpty()) request.headers.append("Content-Type", what.contentType);
    if (speaksRtsp_) {
        request.version = "RTSP/1.0";
        request.headers.append("CSeq", "1");  // the connection counts
    }
    request.body = std::move(body);
    const auto deadline = stage == PairingStage::pinStart ? consentDeadline : answerDeadline;
    co_return co_await connection_->send(std::move(request), deadline);
}

}  // namespace velmora
