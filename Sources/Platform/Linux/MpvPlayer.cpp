#include "Platform/Linux/MpvPlayer.h"

#include "Diagnostics/Log.h"

#include <QCoreApplication>
#include <QFile>

#include <mpv/client.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <clocale>
#include <utility>
#include <vector>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

/// From any thread. Null when mpv does not start.
mpv_handle* startMpv(const MpvPlayer::Options& options) {
    mpv_handle* const mpv = mpv_create();
    if (!mpv) {
        logger().error(u"player: libmpv does not start"_s);
        return nullptr;
    }
    const std::pair<const char*, QByteArray> settings[] = {
        {"config", "no"},
        {"terminal", "no"},
        {"load-scripts", "no"},
        // Its own scripts, each of which has a thread and an interpreter.
        {"load-auto-profiles", "no"},
        {"load-osd-console", "no"},
        {"load-stats-overlay", "no"},
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
        {"audio-fallback-to-null", "yes"},
        {"vo", "null"},
        {"hwdec", options.hardwareDecoding.toUtf8()},
    };
    for (const auto& [name, value] : settings) mpv_set_option_string(mpv, name, value.constData());
    if (options.isMute) mpv_set_option_string(mpv, "ao", "null");
    if (const int error = mpv_initialize(mpv); error < 0) {
        logger().error(u"player: libmpv does not start: "_s + QString::fromUtf8(mpv_error_string(error)));
        mpv_terminate_destroy(mpv);
        return nullptr;
    }
    mpv_request_log_messages(mpv, "error");
    mpv_observe_property(mpv, 0, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(mpv, 0, "eof-reached", MPV_FORMAT_FLAG);
    return mpv;
}

/// On another thread, too, since it waits for all of mpv's own. The process does not end before.
void endMpv(mpv_handle* mpv) {
    static std::vector<std::future<void>> ends;
    std::erase_if(ends, [](const std::future<void>& end) {
        return end.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    ends.push_back(std::async(std::launch::async, [mpv] { mpv_terminate_destroy(mpv); }));
}

}  // namespace

MpvPlayer::MpvPlayer(const Options& options, QObject* parent) : LocalEngine(parent), options_(options) {
    std::setlocale(LC_NUMERIC, "C");
}

MpvPlayer::~MpvPlayer() {
    if (starting_.valid()) mpv_ = starting_.get();
    if (!mpv_) return;
    mpv_set_wakeup_callback(mpv_, nullptr, nullptr);
    endMpv(mpv_);
}

/// On another thread, as loading the library and starting it takes a good tenth of a second.
void MpvPlayer::start() {
    if (mpv_ || starting_.valid()) return;
    starting_ = std::async(std::launch::async, [this] {
        mpv_handle* const started = startMpv(options_);
        QMetaObject::invokeMethod(this, &MpvPlayer::takeStarted, Qt::QueuedConnection);
        return started;
    });
}

void MpvPlayer::takeStarted() {
    if (!starting_.valid()) return;
    mpv_ = starting_.get();
    if (mpv_) {
        const auto wake = [](void* self) {
            auto* player = static_cast<MpvPlayer*>(self);
            QMetaObject::invokeMethod(player, &MpvPlayer::takeEvents, Qt::QueuedConnection);
        };
        mpv_set_wakeup_callback(mpv_, wake, this);
        setKeepsLastPicture(keepsLastPicture_);
    }
    if (stage_ == Stage::loading) loadNow();
}

mpv_handle* MpvPlayer::handle() {
    start();
    takeStarted();
    return mpv_;
}

void MpvPlayer::load(const QString& file) {
    reset();
    stage_ = Stage::loading;
    file_ = file;
    isPaused_ = true;
    start();
    if (mpv_) loadNow();
}

void MpvPlayer::loadNow() {
    setPaused(isPaused_);
    if (mpv_) return send({"loadfile", QFile::encodeName(file_)}, Reply::loading);
    const auto tell = [this] {
        Q_EMIT failed(Texts::tr("The movie cannot be played: libmpv does not start."));
    };
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
    keepsLastPicture_ = on;
    set("keep-open", on ? "yes" : "no", Reply::none);
}

void MpvPlayer::setDraws(bool on) {
    // At once: whoever calls is about to free what mpv draws with, or has just made it.
    if (mpv_) mpv_set_property_string(mpv_, "vo", on ? "libmpv" : "null");
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
    mpv_command_async(mpv_, tagged(reply), pointers.data());
}

void MpvPlayer::set(const char* property, const QByteArray& value, Reply reply) {
    if (!mpv_) return;
    const char* text = value.constData();
    mpv_set_property_async(mpv_, tagged(reply), property, MPV_FORMAT_STRING, static_cast<void*>(&text));
}

}  // namespace velmora
