#pragma once

#include "Preparation/Preparer.h"
#include "Sender/RemotePlayback.h"

#include <QString>

#include <optional>

/// What the terminal shows while something goes on. Pure functions of what they are given.
namespace velmora::ProgressLine {

struct Look {
    int columns = 79;
    bool drawsBlocks = true;  ///< false where the terminal knows nothing beyond ASCII
};

/// Percentage, bar, stage and time left, as far as they are known and fit.
[[nodiscard]] QString preparing(const Preparer::Update& update, Look look);

/// What the television does, the position, and the keys where there is room for them.
[[nodiscard]] QString playing(const RemotePlayback::State& state, const QString& television, Look look);

/// Preparation told in whole lines, for a file or a pipe.
class Plain {
  public:
    /// The line worth writing for `update`: for a new stage, and at every tenth part of it.
    [[nodiscard]] std::optional<QString> line(const Preparer::Update& update);

  private:
    QString stage_;
    int tenths_ = 0;
};

}  // namespace velmora::ProgressLine
