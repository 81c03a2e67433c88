#pragma once

#include "Sender/Connection.h"
#include "Sender/VideoControl.h"

#include <QByteArray>

/// What the dialects with `/play` and its sister verbs have in common.
namespace velmora::PlaybackVerbs {

/// An Apple TV may answer `/play` only when it has loaded something.
constexpr Clock::Duration playDeadline = std::chrono::seconds(30);
/// Apple's boxes answer 500 to `/play` now and then, and a second later they do not.
constexpr int playAttempts = 4;

/// Never with the decimal comma of a locale.
[[nodiscard]] QByteArray decimal(double number);

/// The body of `/play` as a binary property list.
[[nodiscard]] QByteArray playBody(const VideoControl::Movie& movie, const QByteArray& session);
/// The same for very old receivers.
[[nodiscard]] QByteArray playText(const VideoControl::Movie& movie);

/// Success, or what failed.
[[nodiscard]] VideoControl::Outcome outcomeOf(const Connection::Answer& answer);
/// What an answer to `/playback-info` tells.
[[nodiscard]] VideoControl::Reported reportIn(const Connection::Answer& answer);

}  // namespace velmora::PlaybackVerbs
