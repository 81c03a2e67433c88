#include "Interface/Application/Freedesktop/MprisAdaptors.h"

#include "Interface/Application/Freedesktop/LaunchRequest.h"

#include <cmath>
#include <limits>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr double microsecondsPerSecond = 1e6;

}  // namespace

QStringList MprisRootAdaptor::mimeTypes() const {
    return {u"video/x-matroska"_s, u"video/mp4"_s,      u"video/x-m4v"_s, u"video/quicktime"_s,
            u"video/x-msvideo"_s,  u"video/vnd.avi"_s,  u"video/webm"_s,  u"video/x-ms-wmv"_s,
            u"video/mp2t"_s,       u"video/x-flv"_s,    u"video/mpeg"_s,  u"video/ogg"_s,
            u"video/3gpp"_s,       u"inode/directory"_s};
}

MprisPlayerAdaptor::MprisPlayerAdaptor(MprisPlayer& player) : QDBusAbstractAdaptor(&player), player_(player) {
    connect(&player, &MprisPlayer::jumped, this, &MprisPlayerAdaptor::Seeked);
}

QDBusObjectPath MprisPlayerAdaptor::trackPath(int number) {
    return QDBusObjectPath(u"/com/quillet/velmora/movie/%1"_s.arg(number));
}

qlonglong MprisPlayerAdaptor::microseconds(double seconds) {
    return std::llround(seconds * microsecondsPerSecond);
}

QString MprisPlayerAdaptor::playbackStatus() const {
    return MprisPlayer::properties(player_.state()).value(u"PlaybackStatus"_s).toString();
}

QVariantMap MprisPlayerAdaptor::metadata() const {
    return MprisPlayer::properties(player_.state()).value(u"Metadata"_s).toMap();
}

void MprisPlayerAdaptor::Pause() {
    if (player_.state().status == MprisState::Status::playing && canPause()) player_.controls().pause();
}

void MprisPlayerAdaptor::PlayPause() {
    if (canPause() || canPlay()) player_.controls().playPause();
}

void MprisPlayerAdaptor::Play() {
    if (player_.state().status != MprisState::Status::playing && canPlay()) player_.controls().play();
}

void MprisPlayerAdaptor::Seek(qlonglong offset) {
    if (canSeek())
        player_.controls().seek(player_.position() + static_cast<double>(offset) / microsecondsPerSecond);
}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath& track, qlonglong position) {
    const auto& current = player_.state().track;
    // Meant for a movie that has gone meanwhile, or outside of this one: to be ignored.
    if (!canSeek() || !current || track != trackPath(current->number) || position < 0) return;
    const double seconds = static_cast<double>(position) / microsecondsPerSecond;
    if (seconds > current->duration.value_or(std::numeric_limits<double>::infinity())) return;
    player_.controls().seek(seconds);
}

void MprisPlayerAdaptor::OpenUri(const QString& uri) {
    for (const QUrl& movie : LaunchRequest::locations({uri})) player_.controls().open(movie);
}

}  // namespace velmora
