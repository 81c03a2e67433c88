#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

#include <optional>

namespace velmora {

class Session;

/// What a window's menu and its keys do.
enum class Command {
    newWindow,
    openMovie,
    openFolder,
    revealPreparedMovie,
    playOrPause,
    startOver,
    cancelPreparing,
    backTenSeconds,
    forwardTenSeconds,
    backOneMinute,
    forwardOneMinute,
    checkForUpdates,
    closeWindow,
    quit,
};

/// What the commands' titles and states depend on. A value.
struct CommandContext {
    struct Movie {
        bool isPreparing = false;
        bool isReady = false;
        bool isPlaying = false;
        bool canPlayAction = false;
        bool canStartOver = false;
        bool canControlPlayback = false;

        friend bool operator==(const Movie&, const Movie&) = default;
    };

    std::optional<Movie> movie{};  ///< of the focused window's session; absent when no window is focused
    bool canCheckForUpdates = false;

    friend bool operator==(const CommandContext&, const CommandContext&) = default;

    [[nodiscard]] static Movie of(const Session& session);
};

/// One row of the menu.
struct CommandRow {
    Command command{};
    QString title;
    QKeySequence shortcut;  ///< empty when it has none
    bool isEnabled = false;
    bool startsGroup = false;  ///< a line stands before it
    bool repeats = false;      ///< while its key is held down
    /// Its key belongs to popups and dialogs while one is open.
    bool yieldsToPopups = false;

    friend bool operator==(const CommandRow&, const CommandRow&) = default;
};

/// All commands, in the menu's order.
[[nodiscard]] QList<CommandRow> commandTable(const CommandContext& context);

/// Those that act on a session alone; false for the others, which are the application's. What is not possible
/// any more does nothing.
bool perform(Command command, Session& session);

}  // namespace velmora
