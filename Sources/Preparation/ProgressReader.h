#pragma once

#include "Preparation/Preparer.h"

#include <QString>

#include <optional>

namespace velmora {

/// What the lines that ffmpeg writes for `-progress` mean to the user. One per run of ffmpeg.
struct ProgressReader {
    double duration = 0;  ///< of the movie, seconds; 0 when unknown, and then no line means anything
    QString stage;
    bool movesIndexAtEnd = false;  ///< the run ends with a rewrite that reports no progress

    /// The update for `line`, written `elapsed` seconds after the start; absent when there is nothing to say.
    [[nodiscard]] std::optional<Preparer::Update> read(const QString& line, double elapsed) const;
};

}  // namespace velmora
