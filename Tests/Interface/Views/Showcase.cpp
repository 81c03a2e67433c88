#include "Interface/Views/Showcase.h"

#include "Interface/Views/Appearance.h"

#include <QDebug>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>
#include <QThreadPool>
#include <QtPlugin>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Velmora_ViewsPlugin)

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int drawing = 100;  // milliseconds

const MovieState::Timeline somewhere{.position = 2467, .duration = 5900};

MovieState ready() {
    MovieState state;
    state.phase = SessionPhase::Playback{.source = QUrl(u"file:///film.mkv"_s),
                                         .file = QUrl(u"file:///film.mp4"_s),
                                         .note = {},
                                         .subtitleTitles = {}};
    state.title = u"The Long Way to Velden"_s;
    state.timeline = somewhere;
    state.hasOutputContext = true;
    state.canPlayAction = true;
    return state;
}

}  // namespace

Showcase::Showcase(Clock& clock, QSize size) : routes(clock, televisions, &context) {
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(size);
    view.engine()->addImportPath(u":/qt/qml"_s);
    QObject::connect(&movie, &MovieScreenModel::pickRouteRequested, &routes,
                     [this] { routes.open(context); });
}

bool Showcase::open() {
    auto* const component = new QQmlComponent(view.engine(), &view);
    component->setData("import Velmora.Views\nContentView {}", QUrl());
    if (!component->isReady()) {
        qCritical().noquote() << component->errorString();
        return false;
    }
    const QVariantMap properties{{u"movie"_s, QVariant::fromValue(&movie)},
                                 {u"routes"_s, QVariant::fromValue(&routes)},
                                 {u"mainMenu"_s, QVariant::fromValue(&mainMenu)}};
    auto* const item = qobject_cast<QQuickItem*>(component->createWithInitialProperties(properties));
    if (!item) return false;
    view.setContent({}, component, item);
    view.show();
    view.requestActivate();
    settle();
    return true;
}

void Showcase::settle() {
    QTest::qWait(drawing);
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(drawing / 2);
}

QQuickItem* Showcase::screen() const {
    return qobject_cast<QQuickItem*>(content()->property("movieScreen").value<QObject*>());
}

QQuickItem* Showcase::part(const char* name) const {
    return qobject_cast<QQuickItem*>(screen()->property(name).value<QObject*>());
}

QPoint Showcase::middle(const QQuickItem& item) {
    return item.mapToScene({item.width() / 2, item.height() / 2}).toPoint();
}

namespace States {

MovieState resume() {
    MovieState state = ready();
    state.phase = SessionPhase();
    state.lastMovieTitle = std::exchange(state.title, u"Velmora"_s);
    return state;
}

MovieState preparing() {
    MovieState state = ready();
    state.phase = SessionPhase::Preparation{.source = QUrl(u"file:///film.mkv"_s),
                                            .progress = 0.42,
                                            .stage = u"Repacking for Apple TV, no re-encode"_s,
                                            .eta = 180};
    state.timeline = {};
    return state;
}

MovieState waiting() {
    MovieState state = ready();
    state.showsLiveFrame = true;
    return state;
}

MovieState handover(const QString& device) {
    MovieState state = ready();
    state.deviceName = device;
    state.handingOverTo = device;
    state.canPlayAction = false;
    return state;
}

MovieState playing(const QString& device) {
    MovieState state = ready();
    state.deviceName = device;
    state.isOnAppleTV = true;
    state.isPlaying = true;
    state.canControlPlayback = true;
    return state;
}

MovieState failed(const QString& message, bool canTranscode) {
    MovieState state;
    state.phase = SessionPhase::Failure{
        .source = QUrl(u"file:///film.mkv"_s), .message = message, .canTranscode = canTranscode};
    state.title = u"The Long Way to Velden"_s;
    state.hasOutputContext = true;
    return state;
}

}  // namespace States

}  // namespace velmora::test
