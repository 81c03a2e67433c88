#include "Interface/Application/PreparationWatch.h"

#include <QCoreApplication>

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Notifications)
};

}  // namespace

std::optional<PreparationWatch::Message> PreparationWatch::note(const SessionPhase& phase, Clock::Instant now,
                                                                bool isInFront) {
    if (const auto* preparation = phase.preparing()) {
        if (source_ != preparation->source) began_ = now;
        source_ = preparation->source;
        return std::nullopt;
    }
    const auto source = std::exchange(source_, std::nullopt);
    if (!source || isInFront || now - began_ < longPreparation) return std::nullopt;
    if (phase.ready()) return Message{phase.title(), Texts::tr("Ready to play.")};
    if (const auto* failure = phase.failed())
        return Message{Texts::tr("Couldn't get “%1” ready").arg(phase.title()), failure->message};
    return std::nullopt;
}

}  // namespace velmora
