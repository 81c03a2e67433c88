#include "Interface/Application/Freedesktop/MprisPlayer.h"

#include "Diagnostics/Log.h"
#include "Interface/Application/Freedesktop/MprisAdaptors.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>

#include <cmath>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr auto objectPath = "/org/mpris/MediaPlayer2"_L1;
constexpr auto playerInterface = "org.mpris.MediaPlayer2.Player"_L1;
constexpr auto baseName = "org.mpris.MediaPlayer2.velmora"_L1;

/// The session tells the time twice a second; a step beyond this, or backwards, is a jump.
constexpr double longestStep = 2.0;  // seconds

QString newConnectionName() {
    static int count = 0;
    return u"velmora-mpris-%1"_s.arg(++count);
}

QString statusName(MprisState::Status status) {
    using enum MprisState::Status;
    switch (status) {
        case playing:
            return u"Playing"_s;
        case paused:
            return u"Paused"_s;
        case stopped:
            break;
    }
    return u"Stopped"_s;
}

QVariantMap metadata(const MprisState::Track& track) {
    QVariantMap data{{u"mpris:trackid"_s, QVariant::fromValue(MprisPlayerAdaptor::trackPath(track.number))},
                     {u"xesam:title"_s, track.title},
                     {u"xesam:url"_s, track.movie.toString(QUrl::FullyEncoded)}};
    if (track.duration) data.insert(u"mpris:length"_s, MprisPlayerAdaptor::microseconds(*track.duration));
    if (!track.art.isEmpty()) data.insert(u"mpris:artUrl"_s, track.art.toString(QUrl::FullyEncoded));
    return data;
}

}  // namespace

MprisPlayer::MprisPlayer(Controls controls, QObject* parent)
    : QObject(parent),
      controls_(std::move(controls)),
      connectionName_(newConnectionName()),
      bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName_)) {
    new MprisRootAdaptor(*this);
    new MprisPlayerAdaptor(*this);
    if (bus_.isConnected() && !(bus_.registerObject(objectPath, this) && takeName()))
        logger().error(u"media keys: "_s + bus_.lastError().message());
}

MprisPlayer::~MprisPlayer() {
    if (bus_.isConnected() && !name_.isEmpty()) bus_.unregisterService(name_);
    QDBusConnection::disconnectFromBus(connectionName_);
}

/// The plain name for the first window; a further one has its own beside it.
bool MprisPlayer::takeName() {
    constexpr int attempts = 100;
    for (int number = 1; number <= attempts; ++number) {
        const QString suffix = u".instance%1_%2"_s.arg(QCoreApplication::applicationPid()).arg(number);
        const QString name = number == 1 ? QString(baseName) : baseName + suffix;
        if (!bus_.registerService(name)) continue;
        name_ = name;
        return true;
    }
    return false;
}

QVariantMap MprisPlayer::properties(const MprisState& state) {
    return {{u"PlaybackStatus"_s, statusName(state.status)},
            {u"Metadata"_s, state.track ? metadata(*state.track) : QVariantMap()},
            {u"CanPlay"_s, state.canPlay},
            {u"CanPause"_s, state.canPause},
            {u"CanSeek"_s, state.canSeek}};
}

void MprisPlayer::show(const MprisState& state) {
    if (state == state_) return;
    const QVariantMap before = properties(std::exchange(state_, state));
    QVariantMap changed;
    const QVariantMap now = properties(state_);
    for (auto each = now.cbegin(); each != now.cend(); ++each)
        if (each.value() != before.value(each.key())) changed.insert(each.key(), each.value());
    if (changed.isEmpty() || !bus_.isConnected()) return;
    QDBusMessage signal =
        QDBusMessage::createSignal(objectPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    signal << QString(playerInterface) << changed << QStringList();
    bus_.send(signal);
}

void MprisPlayer::showPosition(double position) {
    const double step = position - std::exchange(position_, position);
    if (step < 0 || step > longestStep) Q_EMIT jumped(MprisPlayerAdaptor::microseconds(position));
}

}  // namespace velmora
