// velmora-gallery: every screen of a window in every state, as pictures, without a display.
#include "Interface/Views/Appearance.h"
#include "Interface/Views/Scenery.h"
#include "Interface/Views/Showcase.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QQuickItem>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;
using namespace velmora;
using namespace velmora::test;

namespace {

struct Scene {
    QString name;
    std::function<void(Showcase&)> set;
    QSize size = {640, 460};
    bool isDark = true;
    std::function<void(Showcase&)> act = {};  ///< once it is on the screen
};

const QString den = u"Den"_s;
const QSize small(520, 400);
const QSize large(1280, 800);
const QSize posterSize(1920, 1080);

void showPoster(Showcase& showcase) {
    MovieArtwork artwork;
    artwork.poster = Scenery::dusk(posterSize);
    artwork.thumbnailAt = [](double) { return Scenery::night({480, 270}); };
    showcase.movie.show(artwork);
}

std::function<void(Showcase&)> with(const MovieState& state) {
    return [state](Showcase& showcase) {
        showPoster(showcase);
        showcase.movie.show(state);
    };
}

std::function<void(Showcase&)> without(const MovieState& state) {
    return [state](Showcase& showcase) { showcase.movie.show(state); };
}

void showTracks(Showcase& showcase) {
    showcase.movie.show(
        MovieTracks{.audio = {{u"1"_s, u"English · 5.1"_s}, {u"2"_s, u"Commentary"_s}},
                    .subtitles = {{u"3"_s, u"Dutch"_s}, {u"4"_s, u"English"_s}, {u"5"_s, u"English (SDH)"_s}},
                    .chosenAudio = u"1"_s,
                    .chosenSubtitle = u"3"_s});
}

void showTelevisions(Showcase& showcase) {
    showcase.context.choose(den);
    showcase.televisions.show(
        {{.identifier = u"id of Den"_s, .name = den},
         {.identifier = u"living"_s, .name = u"Living Room"_s, .asks = Television::Asks::code},
         {.identifier = u"kitchen"_s, .name = u"Kitchen Speaker"_s, .cannotShow = u"plays sound only"_s}});
}

void showWaking(Showcase& showcase) {
    MovieState state = States::handover(den);
    state.isWaking = true;
    with(state)(showcase);
    showcase.context.choose(den);
    showcase.televisions.show(
        {{.identifier = u"id of Den"_s, .name = den, .activity = Television::Activity::waking},
         {.identifier = u"living"_s, .name = u"Living Room"_s, .asks = Television::Asks::code},
         {.identifier = u"studio"_s,
          .name = u"Studio"_s,
          .nextTry = std::chrono::steady_clock::now() + std::chrono::seconds(24)}});
}

void showTwelve(Showcase& showcase) {
    with(States::playing(den))(showcase);
    showTracks(showcase);
    QList<Television> all;
    for (const char* name : {"Attic", "Bedroom", "Conference Room on the Third Floor", "Den", "Garden House",
                             "Hall", "Kitchen", "Living Room", "Nursery", "Office", "Studio", "Workshop"})
        all.append(
            {.identifier = u"id of "_s + QString::fromLatin1(name), .name = QString::fromLatin1(name)});
    showcase.context.choose(den);
    showcase.televisions.show(all);
}

void openRoutes(Showcase& showcase) {
    showcase.routes.open(showcase.context);
}

void ask(Showcase& showcase, Television::Asks asks, const QString& television) {
    showcase.televisions.ask(TelevisionQuestion{.asks = asks, .television = television});
    showcase.settle();
}

void type(Showcase& showcase, const char* keys) {
    for (const char* key = keys; *key; ++key) QTest::keyClick(&showcase.view, *key);
}

void openAddressDialog(Showcase& showcase) {
    QMetaObject::invokeMethod(showcase.part("picker"), "openAddressDialog");
    showcase.settle();
    type(showcase, "192.168.1.4");
}

void typeWrongCode(Showcase& showcase) {
    ask(showcase, Television::Asks::code, u"Living Room"_s);
    type(showcase, "4719");
    showcase.televisions.ask(
        TelevisionQuestion{.asks = Television::Asks::code,
                           .television = u"Living Room"_s,
                           .wasWrong = true,
                           .nextTry = std::chrono::steady_clock::now() + std::chrono::seconds(24)});
}

void openMainMenu(Showcase& showcase) {
    QMetaObject::invokeMethod(showcase.content(), "openMainMenu");
}

void fillMainMenu(Showcase& showcase) {
    with(States::waiting())(showcase);
    const auto row = [](const char* text, const QString& keys, bool isEnabled = true) {
        return MenuRow{.identifier = QString::fromUtf8(text),
                       .text = QString::fromUtf8(text),
                       .keys = keys,
                       .canChoose = isEnabled};
    };
    showcase.mainMenu.show(
        {row("New Window", u"Ctrl+N"_s), row("Open Movie…", u"Ctrl+O"_s),
         row("Reveal Prepared Movie", u"Ctrl+Shift+R"_s), MenuRow::line(u"1"_s), row("Play", u"Space"_s),
         row("Start Over", {}), row("Back 1 Minute", u"Shift+←"_s, false),
         row("Forward 1 Minute", u"Shift+→"_s, false), MenuRow::line(u"2"_s), row("Check for Updates…", {})});
}

void focusBack(Showcase& showcase) {
    showcase.part("playButton")->property("button").value<QQuickItem*>()->forceActiveFocus();
    QTest::keyClick(&showcase.view, Qt::Key_Backtab);
}

void rest(Showcase& showcase, const QQuickItem& item) {
    QTest::mouseMove(&showcase.view, Showcase::middle(item));
    QTest::qWait(800);
}

MovieState longMovie() {
    const QString wing = u"Conference Room on the Third Floor, North Wing"_s;
    MovieState state = States::playing(wing);
    state.title = u"The Extraordinary and Altogether Unlikely Voyage of a Very Small Boat"_s;
    state.timeline = {.position = 27667, .duration = 32400};
    return state;
}

MovieState looking() {
    MovieState state = States::preparing();
    state.phase = SessionPhase::Preparation{.source = {}, .stage = u"Looking at the file…"_s};
    state.deviceName = den;
    state.canPlayAction = false;
    return state;
}

MovieState changed(MovieState state, const std::function<void(MovieState&)>& change) {
    change(state);
    return state;
}

QList<Scene> movieScenes() {
    const MovieState playing = States::playing(den);
    const auto paused = changed(playing, [](MovieState& state) { state.isPlaying = false; });
    const auto onDen = [](MovieState& state) { state.deviceName = den; };
    const auto stalled = changed(States::waiting(), onDen);
    const auto showPlaying = [playing](Showcase& showcase) {
        with(playing)(showcase);
        showTracks(showcase);
    };
    return {
        {u"03-preparing"_s, with(States::preparing())},
        {u"04-preparing-looking-no-poster"_s, without(looking())},
        {u"07-resume"_s, with(changed(States::resume(), onDen))},
        {u"08-waiting"_s, with(States::waiting())},
        {u"09-handover"_s, with(States::handover(den))},
        {u"10-remote-playing"_s, showPlaying},
        {u"11-remote-paused"_s, with(paused)},
        {.name = u"12-seeking-drag"_s,
         .set = showPlaying,
         .act = [](Showcase& showcase) { showcase.movie.drag(4350); }},
        {.name = u"13-timeline-hover"_s,
         .set = showPlaying,
         .act = [](Showcase& showcase) { showcase.movie.point(885); }},
        {u"14-stalled"_s, with(stalled)},
        {.name = u"24-tooltip"_s,
         .set = with(changed(looking(), [](MovieState& state) { state.phase = States::preparing().phase; })),
         .act = [](Showcase& showcase) { rest(showcase, *showcase.part("playButton")); }},
        {.name = u"25-keyboard-focus"_s, .set = showPlaying, .act = focusBack},
        {.name = u"26-disc-under-pointer"_s,
         .set = showPlaying,
         .act = [](Showcase& showcase) { QTest::mouseMove(&showcase.view, QPoint(320, 150)); }},
        {u"32-light-preparing-no-poster"_s, without(States::preparing()), {640, 460}, false},
        {u"36-light-resume-no-poster"_s, without(States::resume()), {640, 460}, false},
        {u"38-light-playing-no-poster"_s, without(playing), {640, 460}, false},
        {u"41-small-remote"_s, showPlaying, small},
        {u"51-large-remote"_s, showPlaying, large},
        {u"61-scope-long-names-8h"_s,
         [](Showcase& showcase) {
             MovieArtwork artwork;
             artwork.poster = Scenery::snow({1920, 804});
             showcase.movie.show(artwork);
             showcase.movie.show(longMovie());
         }},
    };
}

QList<Scene> otherScenes() {
    const MovieState missing = changed({}, [](MovieState& state) { state.toolsMissing = true; });
    const auto spaceMessage =
        u"Not enough free disk space to prepare this movie. Needs about 14.6 GB, 3.1 GB free."_s;
    const MovieState full = States::failed(spaceMessage, false);
    const MovieState stopped = States::failed(u"The movie stopped unexpectedly."_s, true);
    const QString words =
        u"ffmpeg could not go on: "_s + u"a very long line of its own words that says little. "_s.repeated(9);
    const auto drag = [](Showcase& showcase) { showcase.content()->setProperty("showsDrop", true); };
    return {
        {u"01-empty"_s, without({})},
        {u"02-tools-missing"_s, without(missing)},
        {u"05-failed-can-reencode"_s, with(stopped)},
        {u"06-failed-final"_s, without(full)},
        {.name = u"15-drop-overlay"_s, .set = with(States::waiting()), .act = drag},
        {u"31-light-tools-missing"_s, without(missing), {640, 460}, false},
        {u"33-light-failed"_s, without(stopped), {640, 460}, false},
        {u"37-light-drop-overlay"_s, without({}), {640, 460}, false, drag},
        {u"42-small-tools-missing"_s, without(missing), small},
        {u"44-small-failed-long-words"_s, without(States::failed(words, true)), small},
        {u"52-large-empty"_s, without({}), large},
    };
}

QList<Scene> popupScenes() {
    const auto showPlaying = [](Showcase& showcase) {
        with(States::playing(den))(showcase);
        showTracks(showcase);
        showTelevisions(showcase);
    };
    const auto showSending = with(States::handover(den));
    const auto code = [](Showcase& showcase) {
        ask(showcase, Television::Asks::code, u"Living Room"_s);
        type(showcase, "47");
    };
    const auto password = [](Showcase& showcase) {
        ask(showcase, Television::Asks::password, u"Studio"_s);
        type(showcase, "secret");
    };
    const auto media = [](Showcase& showcase) {
        QMetaObject::invokeMethod(showcase.screen(), "openMediaMenu");
    };
    return {
        {.name = u"16-media-menu"_s, .set = showPlaying, .act = media},
        {.name = u"17-route-picker"_s, .set = showPlaying, .act = openRoutes},
        {.name = u"18-add-by-address"_s, .set = with(States::waiting()), .act = openAddressDialog},
        {.name = u"19-pin"_s, .set = showSending, .act = code},
        {.name = u"20-pin-wrong-countdown"_s, .set = showSending, .act = typeWrongCode},
        {.name = u"21-password"_s, .set = showSending, .act = password},
        {.name = u"22-waking"_s, .set = showWaking, .act = openRoutes},
        {.name = u"23-main-menu"_s, .set = fillMainMenu, .act = openMainMenu},
        {.name = u"27-no-television"_s, .set = with(States::waiting()), .act = openRoutes},
        {u"34-light-route-picker"_s, showPlaying, {640, 460}, false, openRoutes},
        {u"35-light-pin"_s, without(States::handover(den)), {640, 460}, false, code},
        {u"43-small-route-12-televisions"_s, showTwelve, small, true, openRoutes},
    };
}

QList<Scene> allScenes() {
    QList<Scene> scenes = otherScenes() + movieScenes() + popupScenes();
    const auto mirrored = [](Showcase& showcase) {
        with(States::playing(den))(showcase);
        showTracks(showcase);
        showTelevisions(showcase);
    };
    scenes.append({.name = u"63-right-to-left"_s, .set = mirrored, .act = [](Showcase& showcase) {
                       QGuiApplication::setLayoutDirection(Qt::RightToLeft);
                       openRoutes(showcase);
                   }});
    return scenes;
}

bool save(const Scene& scene, const QDir& folder) {
    Appearance::instance().setLook({.isDark = scene.isDark, .hasHighContrast = false, .animates = false});
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    SystemClock clock;
    Showcase showcase(clock, scene.size);
    showcase.mainMenu.show({MenuRow{.identifier = u"new"_s, .text = u"New Window"_s}});
    scene.set(showcase);
    if (!showcase.open()) return false;
    if (scene.act) {
        scene.act(showcase);
        showcase.settle();
    }
    return showcase.view.grabWindow().save(folder.filePath(scene.name + u".png"_s));
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Saves pictures of every screen. QT_SCALE_FACTOR=2 makes them sharp."_s);
    parser.addHelpOption();
    parser.addPositionalArgument(u"folder"_s, u"where to save them"_s);
    parser.addPositionalArgument(u"names"_s, u"beginnings of the names wanted; all without"_s,
                                 u"[names...]"_s);
    parser.process(application);
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty()) parser.showHelp(2);
    const QDir folder(arguments.takeFirst());
    folder.mkpath(u"."_s);
    QFont font = QGuiApplication::font();
    if (QFontDatabase::families().contains(u"Inter"_s)) font.setFamily(u"Inter"_s);
    font.setPixelSize(14);
    QGuiApplication::setFont(font);
    for (const Scene& scene : allScenes()) {
        const auto isWanted = [&scene](const QString& name) { return scene.name.startsWith(name); };
        if (!arguments.isEmpty() && std::ranges::none_of(arguments, isWanted)) continue;
        if (save(scene, folder)) continue;
        std::fprintf(stderr, "%s could not be shown or saved.\n", qPrintable(scene.name));
        return 1;
    }
    return 0;
}
