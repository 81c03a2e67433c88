#include "Interface/Application/Linux/NetworkTelevisions.h"

#include "Platform/Linux/NetworkOutputContext.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"

#include <algorithm>
#include <chrono>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Phase = RemotePlayback::Phase;

namespace {

// Televisions judge a code or a password within a second or two.
constexpr Clock::Duration verdictPatience = 3s;

}  // namespace

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
    QList<Receiver> receivers = context_.receivers();
    auto chosen = context_.chosen();
    if (chosen && std::ranges::count(receivers, chosen->identifier, &Receiver::identifier) == 0) {
        chosen->announced.reset();
        receivers.append(*chosen);
    }
    for (const Receiver& receiver : std::as_const(receivers)) televisions << describe(receiver, known);
    return televisions;
}

Television NetworkTelevisions::describe(const Receiver& receiver, const QList<Receiver>& known) const {
    using enum Television::Asks;
    using enum Television::Activity;
    const bool isKnown = std::ranges::count(known, receiver.identifier, &Receiver::identifier) > 0;
    const auto takes = receiver.takesVideo();
    const bool canSee = discovery_.unavailableReason().isEmpty();
    Television television{.identifier = receiver.identifier,
                          .name = receiver.name,
                          .cannotShow = takes ? QString() : takes.error(),
                          .canForget = isKnown,
                          .isAway = !receiver.announced && !receiver.isTyped() && canSee};
    const auto nextTry = nextTries_.constFind(receiver.identifier);
    if (nextTry != nextTries_.cend() && *nextTry > clock_.now()) television.nextTry = *nextTry;
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
    RemotePlayback* const playback = context_.output().playback();
    if (!playback || !question_) return;
    hasAnswered_ = true;
    playback->supply(secret);
    keepQuestion(0s);
    followQuestion();
}

void NetworkTelevisions::dismiss() {
    context_.setOutputDevice(std::nullopt, OutputContext::everything);
    followQuestion();
}

void NetworkTelevisions::follow() {
    const Phase phase = context_.output().state().phase;
    const bool isThrough = phase == Phase::playing || phase == Phase::paused || phase >= Phase::ended;
    if (isThrough) hasAnswered_ = false;
    const bool isDifferent = std::exchange(phase_, phase) != phase;
    if (isDifferent) Q_EMIT televisionsChanged();
    followQuestion();
    followOutcome();
}

/// For a dialog that goes and comes back at once is hard to read.
void NetworkTelevisions::keepQuestion(Clock::Duration untilAnswered) {
    keeping_ = clock_.after(untilAnswered + verdictPatience, [this] {
        isKept_ = false;
        followQuestion();
    });
    isKept_ = true;
}

void NetworkTelevisions::followQuestion() {
    const auto question = questionNow();
    if (question && question->nextTry) keepQuestion(*question->nextTry - clock_.now());
    if (question == question_) return;
    question_ = question;
    Q_EMIT questionChanged();
}

void NetworkTelevisions::followOutcome() {
    const RemotePlayback::State state = context_.output().state();
    const bool isThere =
        state.phase == Phase::loading || state.phase == Phase::playing || state.phase == Phase::paused;
    const QString outcome = state.isOver() && !state.reason.isEmpty() ? state.reason : outcome_;
    const QString told = std::exchange(outcome_, isThere ? QString() : outcome);
    if (told != outcome_) Q_EMIT outcomeChanged();
}

std::optional<TelevisionQuestion> NetworkTelevisions::questionNow() {
    const RemotePlayback::State state = context_.output().state();
    const auto television = context_.television();
    if (!television) return std::nullopt;
    const bool isOpen = state.phase == Phase::connecting || state.phase == Phase::loading;
    if (isKept_ && isOpen && question_)
        return TelevisionQuestion{
            .asks = question_->asks, .television = television->name, .isChecking = true};
    const bool asksForCode = state.phase == Phase::needsPin;
    if (!asksForCode && state.phase != Phase::needsPassword) return std::nullopt;
    TelevisionQuestion question{.asks = asksForCode ? Television::Asks::code : Television::Asks::password,
                                .television = television->name,
                                .wasWrong = hasAnswered_ && !state.reason.isEmpty()};
    if (state.retryIn > 0) {
        const std::chrono::duration<double> wait(state.retryIn);
        question.nextTry = clock_.now() + std::chrono::round<std::chrono::milliseconds>(wait);
        nextTries_.insert(television->identifier, *question.nextTry);
    }
    return question;
}

}  // namespace velmora
