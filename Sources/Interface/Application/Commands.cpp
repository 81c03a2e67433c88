#include "Interface/Application/Commands.h"

#include "Playback/Session.h"

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

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
        row(newWindow, u"New Window"_s, key(Qt::CTRL | Qt::Key_N), true),
        row(openMovie, u"Open Movie…"_s, key(Qt::CTRL | Qt::Key_O), true),
        row(revealPreparedMovie, u"Reveal Prepared Movie"_s, key(Qt::CTRL | Qt::SHIFT | Qt::Key_R),
            movie.isReady),
        row(playOrPause, movie.isPlaying ? u"Pause"_s : u"Play"_s, key(Qt::Key_Space), movie.canPlayAction,
            startsGroup | yieldsToPopups),
        row(startOver, u"Start Over"_s, {}, movie.canStartOver),
        row(cancelPreparing, u"Cancel Preparing"_s, key(Qt::CTRL | Qt::Key_Period), movie.isPreparing),
        row(backTenSeconds, u"Back 10 Seconds"_s, key(Qt::Key_Left), movie.canControlPlayback,
            startsGroup | seeking),
        row(forwardTenSeconds, u"Forward 10 Seconds"_s, key(Qt::Key_Right), movie.canControlPlayback,
            seeking),
        row(backOneMinute, u"Back 1 Minute"_s, key(Qt::SHIFT | Qt::Key_Left), movie.canControlPlayback,
            seeking),
        row(forwardOneMinute, u"Forward 1 Minute"_s, key(Qt::SHIFT | Qt::Key_Right), movie.canControlPlayback,
            seeking),
        row(checkForUpdates, u"Check for Updates…"_s, {}, context.canCheckForUpdates, startsGroup),
        row(closeWindow, u"Close Window"_s, key(Qt::CTRL | Qt::Key_W), hasWindow, startsGroup),
        row(quit, u"Quit"_s, key(Qt::CTRL | Qt::Key_Q), true),
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
        case checkForUpdates:
        case closeWindow:
        case quit:
            return false;
    }
    return false;
}

}  // namespace velmora
