#include "Screens/Stories.h"

#include "Platform/Linux/SettingsFile.h"
#include "Sender/Discovery/KnownReceivers.h"

#include <QDirIterator>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

const QString button = u"push button"_s;
const QString status = u"alert message"_s;
const QString menu = u"popup menu"_s;
const QString item = u"menu item"_s;

/// Known from before under such names; nobody is there.
void rememberTelevisions(Stage& stage, const QStringList& names) {
    stage.desk().withPreferences([&](Preferences& preferences) {
        for (qsizetype number = names.size(); number > 0; --number) {
            Receiver receiver = Receiver::fromText(u"192.0.2.%1"_s.arg(number)).value();
            receiver.name = names[number - 1];
            KnownReceivers(preferences).remember(receiver);
        }
    });
}

void closeMenu(Stage& stage) {
    stage.key(Qt::Key_Escape);
    stage.miss(menu, {});
}

bool hasThumbnails(Stage& stage) {
    QDirIterator each(stage.desk().path(u"cache"_s), {u"*.json"_s}, QDir::Files,
                      QDirIterator::Subdirectories);
    return each.hasNext();
}

void drag(Stage& stage, const QString& name) {
    FileDrag files(stage.desk().display(), {QUrl::fromLocalFile(stage.movie(stage.film().feature()))});
    const DesktopWindow window = stage.window();
    stage.expect(files.moveOver(window.id, window.geometry.center()), u"a window that takes movies"_s);
    stage.take(name);
    files.leave();
    stage.point();
}

void openNothing(Stage& stage) {
    stage.start();
    stage.see(button, u"Choose Movie…"_s);
    stage.take(u"01-empty"_s);
    drag(stage, u"37-drop-overlay-empty"_s);
    stage.key(Qt::Key_F10);
    stage.see(menu, {});
    stage.take(u"23-main-menu"_s);
    closeMenu(stage);
    stage.key(Qt::CTRL | Qt::Key_O);
    stage.expect(stage.hasWindows(2), u"the dialog that chooses movies"_s);
    stage.see(item, u"The Long Way to Velden.mkv"_s);
    stage.takeFront(u"28-choose-movie"_s);
    stage.key(Qt::Key_Escape);
    stage.expect(stage.hasWindows(1), u"that dialog closed"_s);
    stage.quit();
}

void lackTools(Stage& stage) {
    stage.start({}, {{u"PATH"_s, stage.desk().path(u"nothing"_s)}});
    stage.see({}, u"ffmpeg isn't installed*"_s);
    stage.take(u"02-tools-missing"_s);
    stage.quit();
}

void prepare(Stage& stage) {
    const QString gate = stage.desk().path(u"gate"_s);
    stage.expect(QFile(gate).open(QIODevice::WriteOnly), u"a gate"_s);
    stage.disguise(u"ffprobe"_s, u"while [ -e '%1' ]; do sleep 0.1; done; exec $tool \"$@\""_s.arg(gate));
    stage.disguise(u"ffmpeg"_s,
                   u"case \"$*\" in *-progress*) exec $tool -readrate 45 \"$@\";; esac; exec $tool \"$@\""_s);
    const TelevisionProcess den(u"Den"_s);
    den.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.see(status, u"Looking at the file…"_s);
    stage.take(u"04-preparing-looking-no-poster"_s);
    QFile::remove(gate);
    stage.see(status, u"Repacking for Apple TV, no re-encode"_s);
    const auto hasCome = [&] { return stage.descriptionOf(u"progress bar"_s).chopped(1).toInt() >= 22; };
    stage.expect(stage.waitUntil(hasCome), u"22%"_s);
    stage.take(u"03-preparing"_s);
    stage.choose(u"Den"_s);
    stage.point(stage.middleOf(button, u"Starts on Den when ready"_s));
    stage.see(u"tool tip"_s, {});
    stage.take(u"24-tooltip-preparing-with-television"_s);
    stage.key(Qt::CTRL | Qt::Key_Period);
    stage.see(button, u"Resume on Den*"_s);
    stage.quit();
}

/// There is hardly any room for what is to be written.
void fail(Stage& stage) {
    stage.disguise(u"ffmpeg"_s,
                   u"case \"$*\" in *-progress*) trap '' XFSZ; ulimit -f 2000;; esac\n"
                   "exec $tool \"$@\""_s);
    stage.start({stage.movie(stage.film().feature())});
    stage.see(button, u"Re-encode and Try Again"_s);
    stage.take(u"05-failed-can-reencode"_s);
    stage.click(button, u"Re-encode and Try Again"_s);
    stage.miss(button, u"Re-encode and Try Again"_s);
    stage.see(button, u"Choose Another Movie…"_s);
    stage.take(u"06-failed-final"_s);
    stage.quit();
}

void failUnread(Stage& stage) {
    QFile broken(stage.desk().path(u"Broken.mkv"_s));
    stage.expect(broken.open(QIODevice::WriteOnly) && broken.write(QByteArray(100'000, 'x')) > 0,
                 u"a file"_s);
    broken.close();
    stage.start({broken.fileName()});
    stage.see(button, u"Re-encode and Try Again"_s);
    stage.take(u"33-failed-no-poster"_s);
    stage.quit();
}

void waitForATelevision(Stage& stage) {
    stage.start({stage.movie(stage.film().feature())});
    stage.see(status, u"Choose an Apple TV"_s);
    stage.expect(stage.waitUntil([&] { return hasThumbnails(stage); }), u"thumbnails"_s);
    stage.take(u"08-waiting"_s);
    stage.click(button, u"Choose an Apple TV"_s);
    stage.see(item, u"No television found"_s);
    stage.take(u"27-no-television"_s);
    stage.press(item, u"Add a television by address…"_s);
    stage.see({}, u"Name or address"_s);
    stage.type(u"192.168.1.4"_s);
    stage.take(u"18-add-by-address"_s);
    stage.type(u"!"_s);
    stage.key(Qt::Key_Return);
    stage.take(u"29-wrong-address"_s);
    stage.key(Qt::Key_Escape);
    stage.quit();
}

void play(Stage& stage) {
    const TelevisionProcess den(u"Den"_s);
    rememberTelevisions(stage, {u"Living Room"_s, u"Studio"_s});
    den.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.choose(u"Den"_s);
    stage.see(button, u"Pause"_s);
    stage.seeEnabled(button, u"Audio and subtitles"_s);
    stage.expect(stage.waitUntil([&] { return hasThumbnails(stage); }), u"thumbnails"_s);
    stage.point(stage.placeAt(0.418));
    stage.take(u"13-timeline-hover"_s);
    Display& display = stage.desk().display();
    display.click(stage.placeAt(0.418));
    stage.expect(stage.waitUntil([&] { return stage.valueOf(u"slider"_s) > 2000; }), u"41 minutes"_s);
    stage.point();
    stage.see(button, u"Pause"_s);
    stage.take(u"10-remote-playing"_s);
    stage.point(stage.placeAt(0.418));
    display.setButton(Qt::LeftButton, true);
    for (const double share : {0.45, 0.6, 0.7375}) stage.point(stage.placeAt(share));
    stage.take(u"12-seeking-drag"_s);
    stage.point(stage.placeAt(0.418));
    display.setButton(Qt::LeftButton, false);
    stage.point(stage.window().geometry.center() - QPoint(0, stage.window().geometry.height() / 5));
    stage.take(u"26-disc-under-pointer"_s);
    stage.point(stage.middleOf(button, u"Playing on Den"_s));
    stage.see(u"tool tip"_s, {});
    stage.take(u"30-tooltip"_s);
    stage.point();
    stage.click(button, u"Audio and subtitles"_s);
    stage.see(item, u"Off"_s);
    stage.point();
    stage.take(u"16-media-menu"_s);
    closeMenu(stage);
    stage.click(button, u"Playing on Den"_s);
    stage.see(item, u"Living Room"_s);
    stage.point();
    stage.take(u"17-route-picker"_s);
    closeMenu(stage);
    drag(stage, u"15-drop-overlay"_s);
    stage.key(Qt::Key_Space);
    stage.see(button, u"Play"_s);
    stage.take(u"11-remote-paused"_s);
    stage.press(button, u"Play"_s);
    stage.see(button, u"Pause"_s);
    for (const Qt::Key key :
         {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Backtab, Qt::Key_Backtab, Qt::Key_Backtab})
        stage.key(key);
    stage.take(u"25-keyboard-focus"_s);
    stage.quit();
    stage.start();
    stage.see(button, u"Resume and choose an Apple TV"_s);
    stage.take(u"07-resume"_s);
    stage.quit();
}

void playLong(Stage& stage) {
    const TelevisionProcess den(u"Conference Room on the Third Floor, North Wing"_s);
    den.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().epic())});
    stage.choose(den.name());
    stage.see(button, u"Pause"_s);
    stage.take(u"61-scope-long-names-9h"_s);
    stage.quit();
}

/// It takes the movie's address, and that is all.
void stall(Stage& stage) {
    const TelevisionProcess den(u"Den"_s, {u"--misbehave"_s, u"never-fetch"_s});
    den.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.choose(u"Den"_s);
    stage.see(status, u"Sending to Den…"_s);
    stage.take(u"09-handover"_s);
    stage.expect(stage.waitUntil([&] { return stage.shows(button, u"Den didn't take it. Try again*"_s); }),
                 u"Den that did not take it"_s);
    stage.take(u"14-stalled"_s);
    stage.quit();
}

void wake(Stage& stage) {
    const TelevisionProcess den(u"Den"_s,
                                {u"--flavour"_s, u"transient"_s, u"--misbehave"_s, u"consent=60"_s});
    rememberTelevisions(stage, {u"Living Room"_s, u"Studio"_s});
    den.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.choose(u"Den"_s);
    stage.see(status, u"Waking Den…"_s);
    stage.click(button, u"Playing on Den"_s);
    stage.see(item, u"Living Room"_s);
    stage.point();
    stage.take(u"22-waking"_s);
    closeMenu(stage);
    stage.quit();
}

void enterCode(Stage& stage) {
    const TelevisionProcess living(u"Living Room"_s, {u"--flavour"_s, u"paired"_s});
    living.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.choose(u"Living Room"_s);
    stage.see({}, u"Enter the code for Living Room"_s);
    stage.type(u"47"_s);
    stage.take(u"19-code"_s);
    stage.type(u"19"_s);
    // The first pause is short, and asked for by itself.
    stage.expect(stage.waitUntil([&] { return stage.hasLogged(u"did not take the code"_s); }),
                 u"a wrong code"_s);
    stage.see({}, u"That code didn't match."_s);
    stage.type(u"4719"_s);
    stage.see({}, u"That code didn't match. Try again in*"_s);
    stage.take(u"20-code-wrong-countdown"_s);
    stage.key(Qt::Key_Escape);
    stage.quit();
}

void enterPassword(Stage& stage) {
    const TelevisionProcess studio(u"Studio"_s,
                                   {u"--flavour"_s, u"password"_s, u"--password"_s, u"open sesame"_s});
    studio.rememberOn(stage.desk());
    stage.start({stage.movie(stage.film().feature())});
    stage.choose(u"Studio"_s);
    stage.see({}, u"Password for Studio"_s);
    stage.type(u"secret"_s);
    stage.take(u"21-password"_s);
    stage.key(Qt::Key_Escape);
    stage.quit();
}

void chooseFromTwelve(Stage& stage) {
    const QStringList names{u"Attic"_s,   u"Bedroom"_s, u"Conference Room on the Third Floor"_s,
                            u"Den"_s,     u"Hall"_s,    u"Garden House"_s,
                            u"Kitchen"_s, u"Office"_s,  u"Living Room"_s,
                            u"Nursery"_s, u"Studio"_s,  u"Workshop"_s};
    rememberTelevisions(stage, names);
    stage.start({stage.movie(stage.film().feature())});
    stage.see(status, u"Choose an Apple TV"_s);
    stage.click(button, u"Choose an Apple TV"_s);
    stage.see(item, u"Den"_s);
    stage.point();
    stage.take(u"43-route-picker-12-televisions"_s);
    closeMenu(stage);
    stage.quit();
}

}  // namespace

QList<Story> allStories() {
    return {{u"nothing"_s, openNothing}, {u"tools"_s, lackTools},        {u"preparing"_s, prepare},
            {u"failed"_s, fail},         {u"unread"_s, failUnread},      {u"waiting"_s, waitForATelevision},
            {u"playing"_s, play},        {u"stalled"_s, stall},          {u"waking"_s, wake},
            {u"code"_s, enterCode},      {u"password"_s, enterPassword}, {u"twelve"_s, chooseFromTwelve},
            {u"long"_s, playLong}};
}

}  // namespace velmora::test
