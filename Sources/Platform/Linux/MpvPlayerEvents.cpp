// What mpv says.
#include "Diagnostics/Log.h"
#include "Platform/Linux/MpvPlayer.h"

#include <QCoreApplication>
#include <QPointer>

#include <mpv/client.h>

#include <cmath>
#include <cstring>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

QString plainWords(int error) {
    switch (error) {
        case MPV_ERROR_LOADING_FAILED:
            return Texts::tr("The movie cannot be opened.");
        case MPV_ERROR_NOTHING_TO_PLAY:
        case MPV_ERROR_UNKNOWN_FORMAT:
            return Texts::tr("There is nothing in this file that can be played.");
        default:
            return Texts::tr("The movie cannot be played (%1).")
                .arg(QString::fromUtf8(mpv_error_string(error)));
    }
}

const mpv_node* member(const mpv_node& map, const char* name) {
    if (map.format != MPV_FORMAT_NODE_MAP) return nullptr;
    for (int index = 0; index < map.u.list->num; ++index) {
        if (std::strcmp(map.u.list->keys[index], name) == 0) return &map.u.list->values[index];
    }
    return nullptr;
}

QString textIn(const mpv_node& map, const char* name) {
    const mpv_node* found = member(map, name);
    return found && found->format == MPV_FORMAT_STRING ? QString::fromUtf8(found->u.string) : QString();
}

qint64 numberIn(const mpv_node& map, const char* name) {
    const mpv_node* found = member(map, name);
    return found && found->format == MPV_FORMAT_INT64 ? found->u.int64 : 0;
}

bool flagIn(const mpv_node& map, const char* name) {
    const mpv_node* found = member(map, name);
    return found && found->format == MPV_FORMAT_FLAG && found->u.flag != 0;
}

std::optional<MpvPlayer::Track> trackFrom(const mpv_node& map) {
    const QString type = textIn(map, "type");
    if (type != u"audio"_s && type != u"sub"_s) return std::nullopt;
    const QString title = textIn(map, "title");
    return MpvPlayer::Track{
        .kind = type == u"audio"_s ? MediaGroup::Kind::audible : MediaGroup::Kind::legible,
        .number = static_cast<int>(numberIn(map, "id")),
        .title = title,
        .language = textIn(map, "lang"),
        .channels = static_cast<int>(numberIn(map, "demux-channel-count")),
        .isForced = flagIn(map, "forced"),
        // Older libraries do not tell; then the track's name is all there is.
        .describesSound = flagIn(map, "hearing-impaired") || title.contains(u"SDH"_s),
        .isSelected = flagIn(map, "selected")};
}

QList<MpvPlayer::Track> tracksFrom(const mpv_node& list) {
    QList<MpvPlayer::Track> tracks;
    if (list.format != MPV_FORMAT_NODE_ARRAY) return tracks;
    for (int index = 0; index < list.u.list->num; ++index) {
        if (const auto track = trackFrom(list.u.list->values[index])) tracks.append(*track);
    }
    return tracks;
}

std::optional<QSize> pictureSizeFrom(const mpv_node& parameters) {
    const QSize size(static_cast<int>(numberIn(parameters, "dw")),
                     static_cast<int>(numberIn(parameters, "dh")));
    if (size.isEmpty()) return std::nullopt;
    return numberIn(parameters, "rotate") % 180 == 0 ? size : size.transposed();
}

/// The value of a number property; absent when it has none now.
std::optional<double> numberOf(const mpv_event_property& property) {
    if (property.format != MPV_FORMAT_DOUBLE) return std::nullopt;
    const double value = *static_cast<const double*>(property.data);
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

void note(const mpv_event_log_message& message) {
    const QString origin = QString::fromUtf8(message.prefix);
    // Decoders complain of every picture of a damaged file.
    if (origin.startsWith(u"ffmpeg"_s)) return;
    logger().error(u"player: %1: %2"_s.arg(origin, QString::fromUtf8(message.text).trimmed()));
}

}  // namespace

void MpvPlayer::takeEvents() {
    const QPointer<MpvPlayer> alive(this);
    while (alive && mpv_) {
        const mpv_event& event = *mpv_wait_event(mpv_.get(), 0);
        if (event.event_id == MPV_EVENT_NONE) return;
        take(event);
    }
}

void MpvPlayer::take(const mpv_event& event) {
    switch (event.event_id) {
        case MPV_EVENT_COMMAND_REPLY:
        case MPV_EVENT_SET_PROPERTY_REPLY:
        case MPV_EVENT_GET_PROPERTY_REPLY:
            return takeReply(event);
        case MPV_EVENT_START_FILE:
            playingEntry_ = static_cast<const mpv_event_start_file*>(event.data)->playlist_entry_id;
            return;
        case MPV_EVENT_END_FILE:
            return takeEnd(*static_cast<const mpv_event_end_file*>(event.data));
        case MPV_EVENT_PLAYBACK_RESTART:
            return takeRestart();
        case MPV_EVENT_PROPERTY_CHANGE:
            return takeProperty(*static_cast<const mpv_event_property*>(event.data));
        case MPV_EVENT_LOG_MESSAGE:
            return note(*static_cast<const mpv_event_log_message*>(event.data));
        default:
            return;
    }
}

void MpvPlayer::takeReply(const mpv_event& event) {
    if (event.reply_userdata >> replyBits != generation_) return;
    const auto reply = static_cast<Reply>(event.reply_userdata & ((1U << replyBits) - 1));
    const auto* property = static_cast<const mpv_event_property*>(event.data);
    const bool isFine = event.error >= 0;
    switch (reply) {
        case Reply::loading:
            if (!isFine)
                Q_EMIT failed(plainWords(event.error));
            else
                awaitedEntry_ =
                    numberIn(static_cast<const mpv_event_command*>(event.data)->result, "playlist_entry_id");
            return;
        case Reply::seekSent:
            if (!isFine && seeking_) endSeek(false);
            return;
        case Reply::trackChanged:
            isChangingTrack_ = false;
            haveTracksChanged_ = true;
            return goOn();
        case Reply::tracks:
            if (isFine) tracks_ = tracksFrom(*static_cast<const mpv_node*>(property->data));
            return;
        case Reply::picture:
            if (isFine) pictureSize_ = pictureSizeFrom(*static_cast<const mpv_node*>(property->data));
            return;
        case Reply::duration:
            if (isFine) duration_ = numberOf(*property);
            return;
        case Reply::position:
            if (isFine) position_ = numberOf(*property);
            if (seeking_ && isSettling_) return endSeek(true);
            if (stage_ != Stage::loading) return;
            stage_ = Stage::ready;
            goOn();
            Q_EMIT ready();
            return;
        default:
            return;
    }
}

void MpvPlayer::takeProperty(const mpv_event_property& property) {
    if (stage_ == Stage::empty || playingEntry_ != awaitedEntry_) return;
    if (std::strcmp(property.name, "time-pos") == 0) {
        position_ = numberOf(property);
    } else if (property.format == MPV_FORMAT_FLAG && *static_cast<const int*>(property.data) != 0) {
        isPaused_ = hasEnded_ = true;  // mpv has paused by itself
        Q_EMIT ended();
    }
}

/// The first picture is there, after loading or after a seek.
void MpvPlayer::takeRestart() {
    if (playingEntry_ != awaitedEntry_) return;
    if (stage_ == Stage::loading && !std::exchange(isAsking_, true)) {
        mpv_get_property_async(mpv_.get(), tagged(Reply::tracks), "track-list", MPV_FORMAT_NODE);
        mpv_get_property_async(mpv_.get(), tagged(Reply::picture), "video-params", MPV_FORMAT_NODE);
        mpv_get_property_async(mpv_.get(), tagged(Reply::duration), "duration", MPV_FORMAT_DOUBLE);
        mpv_get_property_async(mpv_.get(), tagged(Reply::position), "time-pos", MPV_FORMAT_DOUBLE);
    } else if (seeking_ && !isSettling_) {
        if (std::exchange(haveTracksChanged_, false)) return sendSeek();
        isSettling_ = true;
        mpv_get_property_async(mpv_.get(), tagged(Reply::position), "time-pos", MPV_FORMAT_DOUBLE);
    }
}

void MpvPlayer::takeEnd(const mpv_event_end_file& end) {
    const bool isOurs = stage_ != Stage::empty && end.playlist_entry_id == awaitedEntry_;
    if (!isOurs) return;
    if (end.reason == MPV_END_FILE_REASON_ERROR) {
        reset();
        Q_EMIT failed(plainWords(end.error));
    } else if (end.reason == MPV_END_FILE_REASON_EOF) {
        isPaused_ = hasEnded_ = true;
        Q_EMIT ended();
    }
}

}  // namespace velmora
