#pragma once

#include <QList>
#include <QUrl>

#include <functional>
#include <optional>

namespace velmora {

/// Movies that were handed to the application, on their way to windows. Main thread only.
///
/// Before the first window appears they wait: that window takes the first of them, so that a start with three
/// movies shows three windows and no empty one.
class AppDelegate {
  public:
    using OpenWindow = std::function<void(const QUrl& movie)>;
    using BringToFront = std::function<void()>;

    explicit AppDelegate(BringToFront bringToFront) : bringToFront_(std::move(bringToFront)) {}

    /// One window for each, or, before there is any window, none yet. Brings the application to the front.
    void open(const QList<QUrl>& movies);

    /// What opens a window, or brings the one forward that shows the movie already. Said by each window that
    /// appears; stays when the windows are gone.
    void setOpenWindow(OpenWindow openWindow) { openWindow_ = std::move(openWindow); }

    /// The first movie that waits, for a window that was opened without one; the others get windows.
    [[nodiscard]] std::optional<QUrl> takePendingUrl();

    [[nodiscard]] const QList<QUrl>& pending() const { return pending_; }

    /// A new window can still be opened by a file or by starting the application again.
    [[nodiscard]] static constexpr bool shouldQuitAfterLastWindowClosed() { return false; }

  private:
    BringToFront bringToFront_;
    OpenWindow openWindow_;
    QList<QUrl> pending_;
};

}  // namespace velmora
