#include "Screens/Stage.h"

#include "Support/WaitFor.h"

#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

constexpr QPoint corner{40, 40};
constexpr int looks = 3;           // that have to be the same
constexpr int betweenLooks = 120;  // milliseconds
constexpr int longestLook = 4000;  // a movie that plays never stands still for long

// The text size that desktops of Debian have, which Qt asks a desktop's own settings for.
constexpr auto desktopSettings = "[General]\nfont=Inter,-1,14,5,50,0,0,0,0,0\n";

void wait(int milliseconds) {
    const QDeadlineTimer deadline(milliseconds);
    (void)waitFor([&] { return deadline.hasExpired(); });
}

}  // namespace

Stage::Stage(const Look& look, Film& film, const QDir& folder)
    : look_(look),
      film_(film),
      folder_(folder.filePath(look.name)),
      desk_(std::make_unique<Desk>(DeskOptions{.size = look.size * look.scale + QSize(80, 80),
                                               .look = {.isDark = look.isDark, .animates = false}})) {
    folder_.mkpath(u"."_s);
    problem_ = desk_->problem();
}

DesktopWindow Stage::window() const {
    if (isLost()) return {};
    for (const DesktopWindow& window : application_->windows())
        if (window.id == window_) return window;
    return {};
}

QString Stage::movie(const QString& original) {
    const QString copy = desk_->path(u"Videos/"_s + QFileInfo(original).fileName());
    QDir().mkpath(desk_->path(u"Videos"_s));
    if (!QFile::exists(copy)) expect(QFile::copy(original, copy), u"a movie"_s);
    return copy;
}

void Stage::disguise(const QString& tool, const QString& script) {
    const QString folder = desk_->path(u"tools"_s);
    QDir().mkpath(folder);
    QFile file(folder + u'/' + tool);
    const QString text = u"#!/bin/sh\ntool=%1\n%2\n"_s.arg(QStandardPaths::findExecutable(tool), script);
    expect(file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0 &&
               file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner),
           u"a tool's disguise"_s);
}

void Stage::start(const QStringList& arguments, const QMap<QString, QString>& environment) {
    if (isLost()) return;
    QDir().mkpath(desk_->path(u"config"_s));
    QFile settings(desk_->path(u"config/kdeglobals"_s));
    expect(settings.open(QIODevice::WriteOnly) && settings.write(desktopSettings) > 0, u"settings"_s);
    settings.close();
    QMap<QString, QString> all{
        {u"QT_QPA_PLATFORMTHEME"_s, u"kde"_s},
        {u"KDE_SESSION_VERSION"_s, u"5"_s},
        {u"PATH"_s, desk_->path(u"tools"_s) + u':' + desk_->environment().value(u"PATH"_s)}};
    all.insert(environment);
    application_ = std::make_unique<Application>(*desk_, look_.arguments + arguments,
                                                 LaunchSettings{.scale = look_.scale, .environment = all});
    if (!expect(application_->hasWindows(1), u"a window"_s)) return;
    window_ = application_->windows().first().id;
    const QRect wanted(corner, look_.size * look_.scale);
    desk_->display().place(window_, wanted);
    expect(waitUntil([&] { return window().geometry.size() == wanted.size(); }), u"a window of its size"_s);
    expect(application_->bringForward(window()), u"a window in front"_s);
    point();
}

void Stage::quit() {
    if (!isLost()) expect(application_->quit() == 0, u"an end in peace"_s);
    application_.reset();
}

QString Stage::startOver() {
    application_.reset();
    QDir(desk_->path(u"config"_s)).removeRecursively();
    QDir(desk_->path(u"tools"_s)).removeRecursively();
    return std::exchange(problem_, {});
}

bool Stage::expect(bool isSo, const QString& what) {
    if (isSo || isLost()) return isSo;
    problem_ = what;
    if (!application_) return false;
    if (const auto tree = application_->tree()) problem_ += u"\nIt shows:\n"_s + tree->toText();
    constexpr int lines = 30;
    problem_ += u"\nIt logged:\n"_s + application_->log().section(u'\n', -lines);
    return false;
}

void Stage::see(const QString& role, const QString& name) {
    expect(waitUntil([&] { return shows(role, name); }), role + u" “"_s + name + u"”"_s);
}

void Stage::seeEnabled(const QString& role, const QString& name) {
    if (isLost()) return;
    const auto isEnabled = [](const Accessible& each) { return each.is(Accessible::enabled); };
    expect(application_->find(role, name, isEnabled).has_value(), role + u" “"_s + name + u"” enabled"_s);
}

void Stage::miss(const QString& role, const QString& name) {
    if (!isLost()) expect(application_->isGone(role, name), u"no "_s + role + u" “"_s + name + u"”"_s);
}

void Stage::press(const QString& role, const QString& name) {
    if (!isLost()) expect(application_->press(role, name), role + u" “"_s + name + u"” to press"_s);
}

void Stage::click(const QString& role, const QString& name) {
    if (!isLost()) expect(application_->click(role, name), role + u" “"_s + name + u"” to click"_s);
}

void Stage::key(QKeyCombination keys) {
    if (!isLost()) expect(desk_->display().press(keys), u"a key"_s);
}

void Stage::type(const QString& text) {
    if (!isLost()) expect(desk_->display().type(text), u"keys for "_s + text);
}

void Stage::choose(const QString& television) {
    if (!isLost()) expect(application_->chooseTelevision(television), u"the television "_s + television);
    point();
}

void Stage::point(const std::optional<QPoint>& place) {
    if (isLost()) return;
    // It comes from somewhere.
    const QPoint end = place.value_or(QPoint(1, 1));
    desk_->display().movePointer(end - QPoint(1, 1));
    desk_->display().movePointer(end);
}

QPoint Stage::middleOf(const QString& role, const QString& name) {
    const auto found = isLost() ? std::nullopt : application_->find(role, name);
    expect(found.has_value(), role + u" “"_s + name + u"”"_s);
    return found ? found->bounds.center() : QPoint();
}

QPoint Stage::placeAt(double share) {
    const auto canSeek = [](const Accessible& slider) { return slider.is(Accessible::enabled); };
    const auto found = isLost() ? std::nullopt : application_->find(u"slider"_s, u"Timeline"_s, canSeek);
    expect(found.has_value(), u"the timeline"_s);
    return found
               ? QPoint(qRound(found->bounds.x() + share * found->bounds.width()), found->bounds.center().y())
               : QPoint();
}

bool Stage::hasWindows(qsizetype count) const {
    return !isLost() && application_->hasWindows(count);
}

bool Stage::shows(const QString& role, const QString& name) const {
    const auto tree = application_->tree();
    if (!tree) return false;
    const bool isBeginning = name.endsWith(u'*');
    const QList<Accessible> all = tree->all(role, isBeginning ? QString() : name);
    return std::ranges::any_of(
        all, [&](const Accessible& each) { return !isBeginning || each.name.startsWith(name.chopped(1)); });
}

double Stage::valueOf(const QString& role) const {
    const auto tree = application_->tree();
    const Accessible* const found = tree ? tree->find(role, {}) : nullptr;
    return found ? desk_->accessibility().value(*found).value_or(0) : 0;
}

QString Stage::descriptionOf(const QString& role) const {
    const auto tree = application_->tree();
    const Accessible* const found = tree ? tree->find(role, {}) : nullptr;
    return found ? found->description : QString();
}

bool Stage::waitUntil(const std::function<bool()>& condition) {
    constexpr int patience = 120;
    return !isLost() && waitFor(condition, patience);
}

void Stage::take(const QString& name) {
    save(name, window_);
}

void Stage::takeFront(const QString& name) {
    save(name, desk_->display().activeWindow());
}

void Stage::save(const QString& name, quint32 window) {
    if (isLost()) return;
    QImage picture;
    const QDeadlineTimer deadline(longestLook);
    for (int same = 0; same < looks && !deadline.hasExpired();) {
        wait(betweenLooks);
        const QImage now = application_->picture({.id = window, .title = {}, .geometry = {}});
        same = now == picture ? same + 1 : 0;
        picture = now;
    }
    expect(picture.save(folder_.filePath(name + u".png"_s)), u"the picture "_s + name);
}

}  // namespace velmora::test
