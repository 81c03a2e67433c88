#include "Platform/Linux/MpvPlayer.h"

#include "Diagnostics/Log.h"

#include <QDir>
#include <QFile>

#include <dlfcn.h>
#include <mpv/client.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

void dropComplaint(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                   const char* /*format*/, ...) {}

/// What mpv's libraries have to say of devices that are not there goes to standard error, past mpv's own log.
void quietenLibraries() {
    for (const auto& [name, value] : {std::pair("PIPEWIRE_DEBUG", "0"), {"LIBVA_MESSAGING_LEVEL", "0"}}) {
        if (!qEnvironmentVariableIsSet(name)) qputenv(name, value);
    }
    using TakeComplaints = int (*)(decltype(&dropComplaint));
    // It comes with mpv or not at all.
    if (void* const found = dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler"))
        reinterpret_cast<TakeComplaints>(found)(dropComplaint);
}

// What is not there mpv would look for at every file, which takes time, and complain of.

bool hasNvidia() {
    return QFile::exists(u"/dev/nvidia0"_s);
}

bool hasGraphicsProcessor() {
    return hasNvidia() || !QDir(u"/dev/dri"_s).entryList({u"renderD*"_s}, QDir::System).isEmpty();
}

}  // namespace

MpvPlayer::MpvPlayer(const Options& options, QObject* parent) : LocalEngine(parent) {
    std::setlocale(LC_NUMERIC, "C");
    static const bool isQuiet = (quietenLibraries(), true);
    static_cast<void>(isQuiet);
    mpv_handle* const mpv = mpv_create();
    if (!mpv) {
        logger().error(u"player: libmpv does not start"_s);
        return;
    }
    mpv_.reset(mpv, mpv_terminate_destroy);
    const std::pair<const char*, QByteArray> settings[] = {
        {"config", "no"},
        {"terminal", "no"},
        {"load-scripts", "no"},
        {"ytdl", "no"},
        // A movie is one file; whatever else it names is not to be opened on its word.
        {"access-references", "no"},
        {"ordered-chapters", "no"},
        {"osc", "no"},
        {"osd-level", "0"},
        {"idle", "yes"},
        {"pause", "yes"},
        {"keep-open", "yes"},
        {"hr-seek", "yes"},
        // Without it a seek to just before an open group of pictures lands some frames late.
        {"hr-seek-demuxer-offset", "0.25"},
        // Files beside the movie are in it already, where they belong to it.
        {"sub-auto", "no"},
        {"audio-file-auto", "no"},
        {"cover-art-auto", "no"},
        {"audio-client-name", "Velmora"},
        // What else there is to play sound with is for studios, or older.
        {"ao", options.isMute ? "null" : "pipewire,pulse,alsa"},
        {"audio-fallback-to-null", "yes"},
        // A picture fills the place it has, which is of its own ratio but for rounding.
        {"panscan", "1"},
        // It is mostly drawn much smaller than it is.
        {"dscale", "mitchell"},
        {"correct-downscaling", "yes"},
        // Whoever draws does so at once.
        {"video-timing-offset", "0"},
        {"vo", "null"},
        {"hwdec", hasGraphicsProcessor() ? options.hardwareDecoding.toUtf8() : "no"},
        // The others' decoders hand over in memory what they have decoded.
        {"gpu-hwdec-interop", hasNvidia() ? "auto" : "no"},
    };
    for (const auto& [name, value] : settings) mpv_set_option_string(mpv, name, value.constData());
    if (const int error = mpv_initialize(mpv); error < 0) {
        logger().error(u"player: libmpv does not start: "_s + QString::fromUtf8(mpv_error_string(error)));
        mpv_.reset();
        return;
    }
    mpv_request_log_messages(mpv, "error");
    mpv_observe_property(mpv, 0, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(mpv, 0, "eof-reached", MPV_FORMAT_FLAG);
    const auto wake = [](void* self) {
        auto* player = static_cast<MpvPlayer*>(self);
        QMetaObject::invokeMethod(player, &MpvPlayer::takeEvents, Qt::QueuedConnection);
    };
    mpv_set_wakeup_callback(mpv, wake, this);
}

MpvPlayer::~MpvPlayer() {
    if (!mpv_) return;
    mpv_set_wakeup_callback(mpv_.get(), nullptr, nullptr);
    // Somebody may still have to take down what it draws with.
    if (mpv_.use_count() > 1) send({"stop"}, Reply::none);
}

void MpvPlayer::load(const QString& file) {
    reset();
    stage_ = Stage::loading;
    setPaused(true);
    if (mpv_) return send({"loadfile", QFile::encodeName(file)}, Reply::loading);
    const auto tell = [this] { Q_EMIT failed(u"The movie cannot be played: libmpv does not start."_s); };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

void MpvPlayer::unload() {
    reset();
    send({"stop"}, Reply::none);
}

/// Forgets the file, and makes nothing of what mpv still says about it.
void MpvPlayer::reset() {
    ++generation_;
    stage_ = Stage::empty;
    awaitedEntry_ = 0;
    hasEnded_ = isAsking_ = isSettling_ = isChangingTrack_ = haveTracksChanged_ = false;
    position_.reset();
    duration_.reset();
    pictureSize_.reset();
    tracks_.clear();
    nextTrack_.fill(std::nullopt);
    answer(seeking_, false);
    answer(nextSeek_, false);
}

void MpvPlayer::setPaused(bool paused) {
    isPaused_ = paused;
    set("pause", paused ? "yes" : "no", Reply::none);
}

void MpvPlayer::setKeepsLastPicture(bool on) {
    set("keep-open", on ? "yes" : "no", Reply::none);
}

std::optional<double> MpvPlayer::position() const {
    if (nextSeek_) return nextSeek_->seconds;
    return seeking_ ? seeking_->seconds : position_;
}

void MpvPlayer::seek(double seconds, Seek how, Sought done) {
    answer(nextSeek_, false);
    nextSeek_ = WantedSeek{std::max(seconds, 0.0), how, std::move(done)};
    if (stage_ == Stage::empty) return answer(nextSeek_, false);
    goOn();
}

void MpvPlayer::selectTrack(MediaGroup::Kind kind, std::optional<int> number) {
    nextTrack_.at(static_cast<std::size_t>(kind)) = number.value_or(0);
    goOn();
}

/// Sends what is next, unless something is under way.
void MpvPlayer::goOn() {
    if (stage_ != Stage::ready || seeking_ || isChangingTrack_) return;
    for (const auto& [next, property] :
         {std::pair{&nextTrack_[0], "aid"}, std::pair{&nextTrack_[1], "sid"}}) {
        const auto number = std::exchange(*next, std::nullopt);
        if (!number) continue;
        isChangingTrack_ = true;
        return set(property, *number == 0 ? "no" : QByteArray::number(*number), Reply::trackChanged);
    }
    if (!nextSeek_) return;
    hasEnded_ = false;
    seeking_ = std::exchange(nextSeek_, std::nullopt);
    sendSeek();
}

void MpvPlayer::sendSeek() {
    if (!seeking_) return;
    const bool isExact = seeking_->how == Seek::exact;
    send({"seek", QByteArray::number(seeking_->seconds, 'f', 6),
          isExact ? "absolute+exact" : "absolute+keyframes"},
         Reply::seekSent);
}

void MpvPlayer::endSeek(bool finished) {
    isSettling_ = false;
    answer(seeking_, finished);
    goOn();
}

void MpvPlayer::answer(std::optional<WantedSeek>& seek, bool finished) {
    const auto answered = std::exchange(seek, std::nullopt);
    if (!answered || !answered->done) return;
    const auto tell = [done = answered->done, finished] { done(finished); };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

quint64 MpvPlayer::tagged(Reply reply) const {
    return generation_ << replyBits | static_cast<quint64>(reply);
}

void MpvPlayer::send(const QList<QByteArray>& words, Reply reply) {
    if (!mpv_) return;
    std::array<const char*, 8> pointers{};
    for (qsizetype index = 0; index < words.size(); ++index) pointers.at(index) = words[index].constData();
    mpv_command_async(mpv_.get(), tagged(reply), pointers.data());
}

void MpvPlayer::set(const char* property, const QByteArray& value, Reply reply) {
    if (!mpv_) return;
    const char* text = value.constData();
    mpv_set_property_async(mpv_.get(), tagged(reply), property, MPV_FORMAT_STRING, static_cast<void*>(&text));
}

}  // namespace velmora
