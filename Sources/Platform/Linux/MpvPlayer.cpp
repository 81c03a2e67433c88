#include "Platform/Linux/MpvPlayer.h"

#include "Platform/Linux/MpvCore.h"

#include <QCoreApplication>
#include <QFile>

#include <mpv/client.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <mutex>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

}  // namespace

MpvPlayer::MpvPlayer(const Options& options, QObject* parent) : LocalEngine(parent), options_(options) {
    std::setlocale(LC_NUMERIC, "C");
    MpvCore::quietenLibraries();
}

/// For whom mpv is being started.
struct MpvPlayer::Start {
    std::mutex mutex;
    MpvPlayer* player = nullptr;  ///< null when it has gone meanwhile
};

MpvPlayer::~MpvPlayer() {
    if (starting_.valid()) {
        const std::lock_guard lock(start_->mutex);
        start_->player = nullptr;
        MpvCore::doAside([starting = std::move(starting_)]() mutable {
            if (mpv_handle* const made = starting.get()) MpvCore::end(made);
        });
    }
    if (!mpv_) return;
    mpv_set_wakeup_callback(mpv_.get(), nullptr, nullptr);
    // Somebody may still have to take down what it draws with.
    if (mpv_.use_count() > 1) send({"stop"}, Reply::none);
}

/// On another thread, as loading the library and starting it takes a good tenth of a second.
void MpvPlayer::start() {
    if (mpv_ || starting_.valid()) return;
    start_ = std::make_shared<Start>();
    start_->player = this;
    starting_ = std::async(std::launch::async, [start = start_, options = options_] {
        mpv_handle* const made = MpvCore::start(options.isMute, options.hardwareDecoding);
        const std::lock_guard lock(start->mutex);
        if (start->player)
            QMetaObject::invokeMethod(start->player, &MpvPlayer::takeStarted, Qt::QueuedConnection);
        return made;
    });
}

void MpvPlayer::takeStarted() {
    if (!starting_.valid()) return;
    if (mpv_handle* const made = starting_.get()) {
        mpv_.reset(made, MpvCore::end);
        const auto wake = [](void* self) {
            auto* player = static_cast<MpvPlayer*>(self);
            QMetaObject::invokeMethod(player, &MpvPlayer::takeEvents, Qt::QueuedConnection);
        };
        mpv_set_wakeup_callback(made, wake, this);
        setKeepsLastPicture(keepsLastPicture_);
        Q_EMIT started();
    }
    if (stage_ == Stage::loading) loadNow();
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
    keepsLastPicture_ = on;
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
