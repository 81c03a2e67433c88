#include "Interface/Application/PreparationWatch.h"

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

std::optional<PreparationWatch::Message> PreparationWatch::note(const SessionPhase& phase, Clock::Instant now,
                                                                bool isInFront) {
    if (const auto* preparation = phase.preparing()) {
        if (source_ != preparation->source) began_ = now;
        source_ = preparation->source;
        return std::nullopt;
    }
    const auto source = std::exchange(source_, std::nullopt);
    if (!source || isInFront || now - began_ < longPreparation) return std::nullopt;
    if (phase.ready()) return Message{phase.title(), u"Ready to play."_s};
    if (const auto* failure = phase.failed())
        return Message{u"Couldn't get “%1” ready"_s.arg(phase.title()), failure->message};
    return std::nullopt;
}

}  // namespace velmora
