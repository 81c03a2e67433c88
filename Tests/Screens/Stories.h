#pragma once

#include "Screens/Stage.h"

namespace velmora::test {

/// A way through the program that leads past some of its states.
struct Story {
    QString name;
    std::function<void(Stage&)> play;
};

[[nodiscard]] QList<Story> allStories();

}  // namespace velmora::test
