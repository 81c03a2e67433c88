#include "Playback/SessionPhase.h"

#include "Companions/Title.h"

namespace velmora {

std::optional<QUrl> SessionPhase::source() const {
    if (const Preparation* preparation = preparing()) return preparation->source;
    if (const Playback* playback = ready()) return playback->source;
    if (const Failure* failure = failed()) return failure->source;
    return std::nullopt;
}

QString SessionPhase::title() const {
    const std::optional<QUrl> movie = source();
    return movie ? Title::pretty(*movie) : QStringLiteral("Velmora");
}

}  // namespace velmora
