#include "Platform/Linux/LinuxPlayer.h"

#include "Platform/Linux/NetworkOutputContext.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace velmora {

struct LinuxPlayer::Observer {
    Clock::Duration interval;
    TimeObserver callback;
    Clock::Timer timer;
};

LinuxPlayer::LinuxPlayer(Clock& clock, Environment environment)
    : clock_(clock), environment_(std::move(environment)), local_(environment_.makeLocal()) {
    connect(local_.get(), &LocalEngine::ready, this, &LinuxPlayer::takeReady);
    connect(local_.get(), &LocalEngine::failed, this, &LinuxPlayer::takeFailure);
    connect(local_.get(), &LocalEngine::ended, this, &LinuxPlayer::takeEnd);
}

LinuxPlayer::~LinuxPlayer() {
    detach();
}

void LinuxPlayer::replaceCurrentItem(std::shared_ptr<PlayerItem> item) {
    detach();
    if (item_) item_->disconnect(this);
    item_ = std::dynamic_pointer_cast<LinuxPlayerItem>(item);
    kept_.reset();
    isAtEnd_ = isDropped_ = false;
    wantsAttachment_ = wantsToPlay_;
    if (item_) {
        connect(item_.get(), &LinuxPlayerItem::selectionChanged, this, &LinuxPlayer::takeSelection);
        local_->load(item_->file().toLocalFile());
    } else {
        local_->unload();
    }
    setExternal(false);
    updateStatus();
}

void LinuxPlayer::play() {
    if (isAtEnd_) return;
    wantsToPlay_ = wantsAttachment_ = true;
    updateStatus();
    synchronizeSoon();
}

void LinuxPlayer::pause() {
    wantsToPlay_ = false;
    updateStatus();
    synchronizeSoon();
}

std::optional<double> LinuxPlayer::currentTime() const {
    if (!item_) return std::nullopt;
    if (isAttached_) return context_->output().state().position;
    return kept_ ? kept_ : local_->position();
}

void LinuxPlayer::seek(double seconds, Tolerance tolerance, Seeked seeked) {
    isAtEnd_ = false;
    if (item_ && isAttached_) {
        context_->output().seek(seconds);
        // The television's position counts from its target at once.
        const auto tell = [this, seek = ++remoteSeeks_, seeked = std::move(seeked)] {
            const QPointer<LinuxPlayer> alive(this);
            if (seeked) seeked(seek == remoteSeeks_);
            if (alive) tellTime();
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
        return;
    }
    kept_.reset();
    const auto how =
        tolerance.before == Tolerance::anywhere ? LocalEngine::Seek::keyFrame : LocalEngine::Seek::exact;
    local_->seek(seconds, how, [this, seeked = std::move(seeked)](bool finished) {
        const QPointer<LinuxPlayer> alive(this);
        if (seeked) seeked(finished);
        if (alive) tellTime();
    });
}

void LinuxPlayer::setAllowsExternalPlayback(bool on) {
    allowsExternal_ = on;
    synchronizeSoon();
}

bool LinuxPlayer::setOutputContext(OutputContext* context) {
    auto* network = dynamic_cast<NetworkOutputContext*>(context);
    if (context && !network) return false;
    if (network != context_) {
        detach();
        if (context_) context_->output().disconnect(this);
        context_ = network;
        if (context_) connect(&context_->output(), &RemoteOutput::stateChanged, this, &LinuxPlayer::follow);
    }
    wantsAttachment_ = true;
    synchronizeSoon();
    return true;
}

/// Not at once: a pause with a play right behind it is nothing that a television should see.
void LinuxPlayer::synchronizeSoon() {
    if (std::exchange(isSynchronizing_, true)) return;
    QMetaObject::invokeMethod(this, &LinuxPlayer::synchronize, Qt::QueuedConnection);
}

void LinuxPlayer::synchronize() {
    isSynchronizing_ = false;
    if (!item_ || !local_->isReady()) return;
    if (isAttached_) {
        steer();
    } else if (const auto receiver = television()) {
        local_->setPaused(true);
        // What was lost paused comes back paused.
        if (wantsAttachment_ && (wantsToPlay_ || isDropped_)) attach(*receiver);
        if (isAttached_) steer();
    } else {
        playLocally();
    }
    updateStatus();
}

void LinuxPlayer::playLocally() {
    if (const auto position = std::exchange(kept_, std::nullopt))
        local_->seek(*position, LocalEngine::Seek::exact, {});
    setExternal(false);
    local_->setPaused(!wantsToPlay_);
}

void LinuxPlayer::takeReady() {
    // Whoever hears of it may take another item.
    const auto item = item_;
    const QPointer<LinuxPlayer> alive(this);
    item->takeLoaded(local_->duration(), local_->tracks());
    if (!alive) return;
    // Behind the answers about tracks: what is selected then, the television begins with.
    synchronizeSoon();
    tellTime();
}

void LinuxPlayer::takeFailure(const QString& reason) {
    detach();
    const auto item = item_;
    item->takeFailure(reason);
}

void LinuxPlayer::takeEnd() {
    if (isAttached_) return;
    isAtEnd_ = true;
    wantsToPlay_ = false;
    updateStatus();
    tellTime();
}

void LinuxPlayer::takeSelection(MediaGroup::Kind kind) {
    local_->selectTrack(kind, item_->selectedTrack(kind));
    if (isAttached_) chooseThere();
}

LinuxPlayer::TimeControlStatus LinuxPlayer::statusNow() const {
    if (!wantsToPlay_) return TimeControlStatus::paused;
    const bool isMoving = isAttached_ ? context_->output().state().phase == RemotePlayback::Phase::playing
                                      : item_ && local_->isReady() && !television();
    return isMoving ? TimeControlStatus::playing : TimeControlStatus::waiting;
}

void LinuxPlayer::updateStatus() {
    updateDisplay();
    const TimeControlStatus now = statusNow();
    if (std::exchange(status_, now) != now) Q_EMIT timeControlStatusChanged();
}

void LinuxPlayer::setPreventsDisplaySleep(bool on) {
    preventsDisplaySleep_ = on;
    updateDisplay();
}

void LinuxPlayer::updateDisplay() {
    const bool isWatchedHere = statusNow() == TimeControlStatus::playing && !isAttached_;
    const bool isLit = preventsDisplaySleep_ && isWatchedHere && environment_.lightDisplay;
    if (!isLit)
        litDisplay_.reset();
    else if (!litDisplay_)
        litDisplay_ = environment_.lightDisplay();
}

Player::Observation LinuxPlayer::observeTime(std::chrono::nanoseconds interval, TimeObserver observer) {
    const auto made = std::make_shared<Observer>(interval, std::move(observer), Clock::Timer());
    std::erase_if(observers_, [](const std::weak_ptr<Observer>& one) { return one.expired(); });
    observers_.push_back(made);
    arm(made);
    return Observation(made);
}

void LinuxPlayer::arm(const std::shared_ptr<Observer>& observer) {
    const auto tick = [alive = QPointer(this), weak = std::weak_ptr(observer)] {
        const auto ticking = weak.lock();
        if (!ticking || !alive) return;
        if (alive->status_ == TimeControlStatus::playing) ticking->callback(alive->currentTime());
        if (alive) alive->arm(ticking);
    };
    observer->timer = clock_.after(observer->interval, tick);
}

/// The time has jumped.
void LinuxPlayer::tellTime() {
    const QPointer<LinuxPlayer> alive(this);
    for (const std::weak_ptr<Observer>& weak : std::vector(observers_)) {
        const auto observer = weak.lock();
        if (alive && observer) observer->callback(currentTime());
    }
}

std::shared_ptr<Player> LinuxPlayerFactory::makePlayer() {
    return std::make_shared<LinuxPlayer>(clock_, environment_);
}

std::shared_ptr<PlayerItem> LinuxPlayerFactory::makeItem(const QUrl& file) {
    return std::make_shared<LinuxPlayerItem>(file);
}

}  // namespace velmora
