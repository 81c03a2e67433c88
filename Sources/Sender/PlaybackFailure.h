#pragma once

#include "Sender/ConnectionError.h"
#include "Sender/MediaServer.h"
#include "Sender/PlaybackReport.h"
#include "Sender/Receiver.h"

#include <QString>

#include <optional>

namespace velmora {

/// Plain words for everything that keeps a movie from playing on a television: what happened, and where it
/// helps, what to do. All of the sender's texts for the user are here.
namespace PlaybackFailure {

/// The television could not be reached.
[[nodiscard]] QString unreachable(const Receiver& receiver, const ConnectionError& error);

/// It was reached, and refused a request or broke off.
[[nodiscard]] QString refused(const ConnectionError& error);

/// It took the movie's address and shows no picture: the reason as our own server saw it. `mediaPort` is
/// where the server listens; `gaveUp`: the television itself said that it stopped.
[[nodiscard]] QString noPicture(const MediaServer::Activity& activity, quint16 mediaPort,
                                const std::optional<PlaybackFault>& fault, bool gaveUp);

/// Why a password is asked for again.
[[nodiscard]] QString wrongPassword();
/// Why a PIN is: the television refused one, and when the television hung up.
[[nodiscard]] QString pinNotTaken();
[[nodiscard]] QString newPin();

[[nodiscard]] QString unusableAddress();
[[nodiscard]] QString dropped();
[[nodiscard]] QString stoppedThere();
[[nodiscard]] QString takenOver();

}  // namespace PlaybackFailure

}  // namespace velmora
