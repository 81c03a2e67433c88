#pragma once

#include <QImage>

/// Pictures that a shader would make elsewhere, made on the processor. Pure functions; any thread.
namespace velmora::Blur {

/// The blurred, darkened small picture behind a window, from a movie's poster; null for a null poster.
[[nodiscard]] QImage backdrop(const QImage& poster);

/// The shadow of a box with round corners, alpha only, for nine slices: its border takes `shadowBorder`
/// pixels on each side, between them is one pixel. All lengths in pixels.
[[nodiscard]] QImage shadow(int width, int cornerRadius);
[[nodiscard]] constexpr int shadowBorder(int width, int cornerRadius) {
    return 2 * width + cornerRadius;
}

}  // namespace velmora::Blur
