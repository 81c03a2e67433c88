#include "Playback/Session.h"

#include "Preparation/Tools.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

template <class Value>
[[nodiscard]] bool changes(Value& field, Value value) {
    if (field == value) return false;
    field = std::move(value);
    return true;
}

}  // namespace

Session::Session(World& world, OutputContext* context, QObject* parent)
    : QObject(parent),
      world_(world),
      memory_(world.preferences),
      airPlay_(world.clock, context),
      sleepGuard_(world.power),
      waits_(world.clock),
      handoverWaits_(world.clock) {
    if (world_.earlierPreferences) memory_.migrate(*world_.earlierPreferences);
    player_ = makePlayer();
    player_->setPausesAtEnd(true);
    player_->setPreventsDisplaySleep(true);
    airPlay_.onRouteChange([this](const std::optional<QString>& name) { followRoute(name); });
    if (!std::exchange(world_.hasOfferedLastMovie, true)) {
        loadLastMovie();
        if (lastMovie_) showPoster(lastMovie_->source);
    }
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &Session::prepareToQuit);
}

Session::~Session() {
    rememberPosition(player_->currentTime());
    // What the player tells while it stops is no longer the movie's.
    phase_ = Phase();
    stopPlayback();
}

bool Session::toolsMissing() {
    return !Tools::ffmpeg() || !Tools::ffprobe();
}

bool Session::isStalled() const {
    return phase_.ready() && !handingOverTo_ && airPlay_.deviceName() && !isOnAppleTV_;
}

bool Session::showsLiveFrame() const {
    return phase_.ready() && !handingOverTo_ && !isOnAppleTV_;
}

std::optional<Session::Timeline> Session::savedTimeline() const {
    if (phase_.ready() && duration_ > 0) return Timeline{std::min(currentTime_, duration_), duration_};
    if (!phase_.isIdle() || !lastMovie_ || !lastMovie_->duration) return std::nullopt;
    const double duration = *lastMovie_->duration;
    return Timeline{std::min(lastMovie_->position.value_or(0), duration), duration};
}

void Session::enter(Phase phase) {
    if (changes(phase_, std::move(phase))) Q_EMIT phaseChanged();
}

void Session::setOnAppleTV(bool on) {
    if (changes(isOnAppleTV_, on)) Q_EMIT routeChanged();
}

void Session::setHandingOverTo(const std::optional<QString>& deviceName) {
    if (changes(handingOverTo_, deviceName)) Q_EMIT routeChanged();
}

void Session::setTimeline(double time, double duration) {
    const bool hasMoved = changes(currentTime_, time);
    if (changes(duration_, duration) || hasMoved) Q_EMIT timelineChanged();
}

void Session::setSeeking(bool on) {
    if (changes(isSeeking_, on)) Q_EMIT timelineChanged();
}

}  // namespace velmora
