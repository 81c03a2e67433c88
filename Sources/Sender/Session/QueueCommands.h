#pragma once

#include "Sender/VideoControl.h"

#include <QVariantMap>

/// What the play queue of a receiver is told, as values: each goes into an envelope of its own.
namespace velmora::QueueCommands {

/// `asFraction`: also tell the start in the form that televisions heed; Apple's own know seconds only.
[[nodiscard]] QVariantMap insert(const VideoControl::Movie& movie, bool asFraction);
[[nodiscard]] QVariantMap interestInDates(const QString& uuid);
/// At its end the movie stands, and says so.
[[nodiscard]] QVariantMap pauseAtEnd();
[[nodiscard]] QVariantMap setRate(double rate);
/// `number` rises with each question; the answer repeats it. One receiver ignores a seek without the item,
/// another one without the tolerances.
[[nodiscard]] QVariantMap seek(double seconds, const QString& uuid, int number);
[[nodiscard]] QVariantMap playbackInfo(int number);
[[nodiscard]] QVariantMap stop();

}  // namespace velmora::QueueCommands
