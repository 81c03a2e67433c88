#include "Sender/Session/SessionRoad.h"

#include "Sender/Session/NtpResponder.h"

using namespace Qt::StringLiterals;

namespace velmora {

SessionRoad SessionRoad::through(const std::shared_ptr<Access>& access) {
    return {.receiver = access->receiver(),
            .link = [access] { return access->link(); },
            .dial = [access](quint16 port) { return access->dial(port); },
            .serveTime = [](const QHostAddress& local, const QHostAddress& receiver) -> TimeService {
                std::shared_ptr<NtpResponder> responder = NtpResponder::listen(local, receiver);
                if (!responder) return {};
                const quint16 port = responder->port();
                return {port, std::move(responder)};
            },
            .close = [access] { access->close(); }};
}

ReceiverKind receiverKind(const Receiver& receiver) {
    const QString announced = receiver.announced ? receiver.announced->model : QString();
    const QString model = announced.isEmpty() ? receiver.model : announced;
    if (model.isEmpty()) return ReceiverKind::unknown;
    if (model.startsWith("AppleTV"_L1)) return ReceiverKind::appleTv;
    const bool isComputer = model.startsWith("Mac"_L1) || model.startsWith("iMac"_L1);
    return isComputer ? ReceiverKind::computer : ReceiverKind::television;
}

}  // namespace velmora
