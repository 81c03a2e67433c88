#pragma once

#include <QImage>

/// Pictures to stand in for movies'.
namespace velmora::test::Scenery {

[[nodiscard]] QImage dusk(QSize size);
[[nodiscard]] QImage night(QSize size);
[[nodiscard]] QImage snow(QSize size);

}  // namespace velmora::test::Scenery
