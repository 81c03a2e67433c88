#pragma once

#include "System/Player.h"

namespace velmora {

class Session;

/// Selects the track behind the one that is on: behind the last sound comes the first, behind the last
/// subtitles none, and then the first. Returns what to tell the viewer; empty as long as the tracks are not
/// known, or nothing can be steered.
[[nodiscard]] QString selectNextTrack(Session& session, MediaGroup::Kind kind);

}  // namespace velmora
