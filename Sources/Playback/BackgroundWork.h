#pragma once

#include "Playback/World.h"

#include <QString>

#include <functional>
#include <list>
#include <memory>
#include <stop_token>
#include <thread>

namespace velmora {

/// Blocking work on threads of its own, whose news come back to the main thread. Main thread only.
///
/// Work with equal keys never overlaps: one that was let go of may still be cleaning up behind itself.
class BackgroundWork {
  public:
    /// From any thread: runs `news` on the main thread, unless the job is gone by then.
    using Post = std::function<void(std::function<void()> news)>;
    using Work = std::function<void(const std::stop_token& stop, const Post& post)>;

    BackgroundWork() = default;
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;
    /// Asks everything to end, and waits for it.
    ~BackgroundWork();

    [[nodiscard]] Job start(const QString& key, Work work);

  private:
    struct Run;

    void forgetEnded();

    std::list<std::shared_ptr<Run>> runs_;
};

}  // namespace velmora
