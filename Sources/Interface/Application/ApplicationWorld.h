#pragma once

#include <functional>
#include <memory>

class QQuickItem;

namespace velmora {

class OutputContext;
class Player;
class Televisions;
struct World;

/// What one window needs of the running system for itself. Main thread only.
class WindowWorld {
  public:
    WindowWorld() = default;
    WindowWorld(const WindowWorld&) = delete;
    WindowWorld& operator=(const WindowWorld&) = delete;
    virtual ~WindowWorld() = default;

    /// Null where there are no televisions to choose from.
    [[nodiscard]] virtual OutputContext* outputContext() = 0;
    [[nodiscard]] virtual Televisions& televisions() = 0;

    /// Ends politely what still plays on a television, once the window is gone. Calls `done` once, within a
    /// few seconds; until then this stays.
    virtual void finish(std::function<void()> done) = 0;
};

/// The running system, as the application's windows need it. Outlives them. Main thread only.
class ApplicationWorld {
  public:
    ApplicationWorld() = default;
    ApplicationWorld(const ApplicationWorld&) = delete;
    ApplicationWorld& operator=(const ApplicationWorld&) = delete;
    virtual ~ApplicationWorld() = default;

    [[nodiscard]] virtual World& world() = 0;
    [[nodiscard]] virtual std::unique_ptr<WindowWorld> makeWindowWorld() = 0;

    /// Shows what the player shows on this computer, whole, in the middle of the item and with the still's
    /// round corners. The implicit size is the picture's; until there is one, it is empty and nothing is
    /// drawn. There is to be one at a time for a player. Null where the player has no pictures.
    [[nodiscard]] virtual std::unique_ptr<QQuickItem> makeLivePicture(Player& player) = 0;
};

}  // namespace velmora
