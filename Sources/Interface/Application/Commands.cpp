#include "Interface/Application/Commands.h"

#include "Playback/Session.h"

#include <QCoreApplication>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Commands)
};

enum class Trait : unsigned { none = 0, startsGroup = 1, repeats = 2, yieldsToPopups = 4 };
constexpr Trait operator|(Trait one, Trait other) {
    return Trait(std::to_underlying(one) | std::to_underlying(other));
}
constexpr bool has(Trait traits, Trait trait) {
    return (std::to_underlying(traits) & std::to_underlying(trait)) != 0;
}

CommandRow row(Command command, const QString& title, const QKeySequence& shortcut, bool isEnabled,
               Trait traits = Trait::none) {
    return {.command = command,
            .title = title,
            .shortcut = shortcut,
            .isEnabled = isEnabled,
            .startsGroup = has(traits, Trait::startsGroup),
            .repeats = has(traits, Trait::repeats),
            .yieldsToPopups = has(traits, Trait::yieldsToPopups)};
}

void seekBy(double seconds, Session& session) {
    if (session.canControlPlayback()) session.seek(session.currentTime() + seconds);
}

}  // namespace

CommandContext::Movie CommandContext::of(const Session& session) {
    return {.isPreparing = session.phase().preparing() != nullptr,
            .isReady = session.phase().ready() != nullptr,
            .isPlaying = session.isPlaying(),
            .canPlayAction = session.canPlayAction(),
            .canStartOver = session.canStartOver(),
            .canControlPlayback = session.canControlPlayback()};
}

QList<CommandRow> commandTable(const CommandContext& context) {
    using enum Command;
    using enum Trait;
    const CommandContext::Movie movie = context.movie.value_or(CommandContext::Movie{});
    const bool hasWindow = context.movie.has_value();
    const Trait seeking = repeats | yieldsToPopups;
    const auto key = [](auto keys) { return QKeySequence(keys); };
    return {
        row(newWindow, Texts::tr("New Window"), key(Qt::CTRL | Qt::Key_N), true),
        row(openMovie, Texts::tr("Open Movie…"), key(Qt::CTRL | Qt::Key_O), true),
        row(openFolder, Texts::tr("Open Folder…"), key(Qt::CTRL | Qt::SHIFT | Qt::Key_O), true),
        row(revealPreparedMovie, Texts::tr("Reveal Prepared Movie"), key(Qt::CTRL | Qt::SHIFT | Qt::Key_R),
            movie.isReady),
        row(playOrPause, movie.isPlaying ? Texts::tr("Pause") : Texts::tr("Play"), key(Qt::Key_Space),
            movie.canPlayAction, startsGroup | yieldsToPopups),
        row(startOver, Texts::tr("Start Over"), {}, movie.canStartOver),
        row(cancelPreparing, Texts::tr("Cancel Preparing"), key(Qt::CTRL | Qt::Key_Period),
            movie.isPreparing),
        row(backTenSeconds, Texts::tr("Back 10 Seconds"), key(Qt::Key_Left), movie.canControlPlayback,
            startsGroup | seeking),
        row(forwardTenSeconds, Texts::tr("Forward 10 Seconds"), key(Qt::Key_Right), movie.canControlPlayback,
            seeking),
        row(backOneMinute, Texts::tr("Back 1 Minute"), key(Qt::SHIFT | Qt::Key_Left),
            movie.canControlPlayback, seeking),
        row(forwardOneMinute, Texts::tr("Forward 1 Minute"), key(Qt::SHIFT | Qt::Key_Right),
            movie.canControlPlayback, seeking),
        row(checkForUpdates, Texts::tr("Check for Updates…"), {}, context.canCheckForUpdates, startsGroup),
        row(closeWindow, Texts::tr("Close Window"), key(Qt::CTRL | Qt::Key_W), hasWindow, startsGroup),
        row(quit, Texts::tr("Quit"), key(Qt::CTRL | Qt::Key_Q), true),
    };
}

bool perform(Command command, Session& session) {
    using enum Command;
    switch (command) {
        case revealPreparedMovie:
            session.revealInFinder();
            return true;
        case playOrPause:
            session.playAction();
            return true;
        case startOver:
            session.startOver();
            return true;
        case cancelPreparing:
            if (session.phase().preparing()) session.cancel();
            return true;
        case backTenSeconds:
            seekBy(-10, session);
            return true;
        case forwardTenSeconds:
            seekBy(10, session);
            return true;
        case backOneMinute:
            seekBy(-60, session);
            return true;
        case forwardOneMinute:
            seekBy(60, session);
            return true;
        case openMovie:
            session.chooseFile();
            return true;
        case newWindow:
        case openFolder:
        case checkForUpdates:
        case closeWindow:
        case quit:
            return false;
    }
    return false;
}

}  // namespace velmora
