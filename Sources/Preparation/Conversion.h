#pragma once

#include "Preparation/Media.h"
#include "Preparation/PartialFile.h"
#include "Preparation/Plan.h"
#include "Preparation/Preparer.h"
#include "Preparation/Tools.h"

#include <QString>
#include <QUrl>

#include <expected>
#include <stop_token>
#include <system_error>

namespace velmora {

/// ffmpeg at work on one movie: into the partial file with room kept for the index at its front, and once
/// more, with the index moved there at the end, when that room was too small.
class Conversion {
  public:
    struct Job {
        QUrl ffmpeg;
        QUrl source;
        Plan plan;
        double duration = 0;  ///< of the movie, seconds; 0 when unknown
        QString stage;        ///< what the user reads meanwhile
    };

    Conversion(Job job, const PartialFile& partial, const Preparer::UpdateCallback& onUpdate,
               std::stop_token stop);

    /// Blocks. On success the partial file is whole.
    [[nodiscard]] std::expected<void, PrepareError> run() const;

  private:
    using Attempt = std::expected<Tools::Output, std::error_code>;

    [[nodiscard]] Attempt attempt(bool faststart) const;
    [[nodiscard]] bool hasFailed(const Tools::Output& output) const;
    [[nodiscard]] bool lackedIndexRoom(const Attempt& attempt) const;
    [[nodiscard]] std::expected<void, PrepareError> outcome(const Attempt& attempt) const;

    Job job_;
    const PartialFile& partial_;
    const Preparer::UpdateCallback& onUpdate_;
    std::stop_token stop_;
};

}  // namespace velmora
