#pragma once

/// What this computer draws with, as far as its device files tell. Nothing is loaded or started to find out.
namespace velmora::Graphics {

/// One of a maker whose own driver has its own ways.
[[nodiscard]] bool hasNvidia();

/// False where OpenGL would only imitate one, as on many virtual and remote machines.
[[nodiscard]] bool hasProcessor();

}  // namespace velmora::Graphics
