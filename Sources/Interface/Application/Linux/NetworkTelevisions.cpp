#include "Interface/Application/Linux/NetworkTelevisions.h"

#include "Platform/Linux/NetworkOutputContext.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"

#include <algorithm>
#include <chrono>

namespace velmora {

using namespace Qt::StringLiterals;
using Phase = RemotePlayback::Phase;

NetworkTelevisions::NetworkTelevisions(Clock& clock, Discovery& discovery, NetworkOutputContext& context,
                                       const ReceiverMemory& memory)
    : clock_(clock), discovery_(discovery), context_(context), memory_(memory) {
    connect(&discovery_, &Discovery::receiversChanged, this, &Televisions::televisionsChanged);
    connect(&discovery_, &Discovery::unavailableReasonChanged, this, &Televisions::televisionsChanged);
    connect(&context_.output(), &RemoteOutput::stateChanged, this, &NetworkTelevisions::follow);
}

QList<Television> NetworkTelevisions::televisions() const {
    const QList<Receiver> known = memory_.known ? memory_.known->receivers() : QList<Receiver>();
    QList<Television> televisions;
    const QList<Receiver> receivers = context_.receivers();
    for (const Receiver& receiver : receivers) televisions << describe(receiver, known);
    return televisions;
}

Television NetworkTelevisions::describe(const Receiver& receiver, const QList<Receiver>& known) const {
    using enum Television::Asks;
    using enum Television::Activity;
    const bool isKnown = std::ranges::count(known, receiver.identifier, &Receiver::identifier) > 0;
    const auto takes = receiver.takesVideo();
    Television television{.identifier = receiver.identifier,
                          .name = receiver.name,
                          .cannotShow = takes ? QString() : takes.error(),
                          .canForget = isKnown};
    // One that was used before has what it asks for in its memory.
    const Course course = Course::decide(receiver, {.pairing = isKnown, .password = isKnown}, {});
    television.asks = course.needsPassword ? password : course.needsPin ? code : Television::Asks::nothing;

    const auto chosen = context_.television();
    if (chosen && chosen->identifier == receiver.identifier)
        television.activity = phase_ == Phase::waking                                   ? waking
                              : phase_ == Phase::connecting || phase_ == Phase::loading ? connecting
                                                                                        : none;
    return television;
}

QString NetworkTelevisions::unavailableReason() const {
    return discovery_.unavailableReason();
}

QString NetworkTelevisions::add(const QString& address) {
    const auto receiver = Receiver::fromText(address);
    if (!receiver) return receiver.error();
    if (memory_.known) memory_.known->remember(*receiver);
    context_.choose(*receiver);
    Q_EMIT televisionsChanged();
    return {};
}

void NetworkTelevisions::forget(const QString& identifier) {
    memory_.forget(identifier);
    Q_EMIT televisionsChanged();
}

void NetworkTelevisions::answer(const QString& secret) {
    if (RemotePlayback* playback = context_.output().playback()) {
        hasAnswered_ = true;
        playback->supply(secret);
    }
}

/// Who does not know the code does not want this television now.
void NetworkTelevisions::dismiss() {
    context_.setOutputDevice(std::nullopt, OutputContext::everything);
}

void NetworkTelevisions::follow() {
    const Phase phase = context_.output().state().phase;
    const bool asks = phase == Phase::needsPin || phase == Phase::needsPassword;
    const bool goesOn = phase == Phase::connecting || phase == Phase::waking;
    if (!asks && !goesOn) hasAnswered_ = false;
    const bool isDifferent = std::exchange(phase_, phase) != phase;
    if (isDifferent) Q_EMIT televisionsChanged();
    const auto question = questionNow();
    if (question == question_ && !(asks && isDifferent)) return;
    question_ = question;
    Q_EMIT questionChanged();
}

std::optional<TelevisionQuestion> NetworkTelevisions::questionNow() const {
    const RemotePlayback::State state = context_.output().state();
    const bool asksForCode = state.phase == Phase::needsPin;
    const auto television = context_.television();
    if (!television || (!asksForCode && state.phase != Phase::needsPassword)) return std::nullopt;
    TelevisionQuestion question{.asks = asksForCode ? Television::Asks::code : Television::Asks::password,
                                .television = television->name,
                                .wasWrong = hasAnswered_ && !state.reason.isEmpty()};
    if (state.retryIn > 0)
        question.nextTry = clock_.now() + std::chrono::ceil<std::chrono::seconds>(
                                              std::chrono::duration<double>(state.retryIn));
    return question;
}

}  // namespace velmora
