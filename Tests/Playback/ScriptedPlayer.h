#pragma once

#include "Support/Seconds.h"
#include "Support/VirtualClock.h"
#include "System/Player.h"

#include <QCoreApplication>
#include <QMap>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace velmora::test {

using namespace Qt::StringLiterals;

class ScriptedPlayer;

/// Where the scripted players play: numbered from 1 in the order of their making, each noting in one journal
/// what it is told ("1.5 2 play": after 1.5 s the second player was told to play).
class Stage : public PlayerFactory {
  public:
    explicit Stage(VirtualClock& time) : clock(time) {}

    VirtualClock& clock;
    std::vector<std::weak_ptr<ScriptedPlayer>> players;

    // The script.
    QMap<int, double> takenAfter;  ///< seconds from a player's first play until the device shows the movie
    double readyAfter = 0.3;       ///< seconds from an item's becoming current
    double seekTakes = 0.2;        ///< seconds
    bool answersSeeks = true;
    int ignoredPlays = 0;  ///< by each player, once it is shown on the device
    QString itemError;     ///< items fail with it rather than becoming ready
    double length = 5400;  ///< seconds
    std::optional<MediaGroup> subtitles;
    std::optional<MediaGroup> audio;
    QMap<MediaGroup::Kind, MediaOption> selected;

    [[nodiscard]] std::shared_ptr<Player> makePlayer() override;
    [[nodiscard]] std::shared_ptr<PlayerItem> makeItem(const QUrl& file) override;

    [[nodiscard]] ScriptedPlayer& player(size_t number) { return *players.at(number - 1).lock(); }
    [[nodiscard]] qsizetype alive() const {
        return std::ranges::count_if(players, [](const auto& player) { return !player.expired(); });
    }

    void note(const QString& what) {
        const double seconds = std::chrono::duration<double>(clock.elapsed() - origin_).count();
        journal_.append(QString::number(std::round(seconds * 1000) / 1000) + u' ' + what);
    }
    /// From here on the journal counts its seconds.
    void begin() {
        origin_ = clock.elapsed();
        journal_.clear();
    }
    [[nodiscard]] QStringList journal() { return std::exchange(journal_, {}); }

  private:
    QStringList journal_;
    Clock::Duration origin_{};
};

class ScriptedItem : public PlayerItem {
  public:
    ScriptedItem(Stage& stage, QUrl file) : stage_(stage), file_(std::move(file)), chosen(stage.selected) {}

    [[nodiscard]] QUrl file() const override { return file_; }
    [[nodiscard]] Status status() const override { return status_; }
    [[nodiscard]] QString error() const override { return error_; }
    [[nodiscard]] std::optional<double> duration() const override {
        return status_ == Status::readyToPlay ? std::optional(stage_.length) : std::nullopt;
    }
    void loadGroup(MediaGroup::Kind kind, GroupLoaded loaded) override {
        if (status_ == Status::unknown) return earlyCalls_.push_back({kind, std::move(loaded)});
        const bool isText = kind == MediaGroup::Kind::legible;
        stage_.note(isText ? u"load subtitles"_s : u"load audio"_s);
        const auto group = isText ? stage_.subtitles : stage_.audio;
        QMetaObject::invokeMethod(this, [loaded, group] { loaded(group); }, Qt::QueuedConnection);
    }
    [[nodiscard]] std::optional<MediaOption> selected(MediaGroup::Kind kind) const override {
        return chosen.contains(kind) ? std::optional(chosen.value(kind)) : std::nullopt;
    }
    void select(const std::optional<MediaOption>& option, MediaGroup::Kind kind) override {
        stage_.note(u"select "_s + (option ? option->identifier : u"nothing"_s));
        chosen.remove(kind);
        if (option) chosen.insert(kind, *option);
    }

    void load() {
        const bool fails = !stage_.itemError.isEmpty();
        loading_ = stage_.clock.after(seconds(stage_.readyAfter), [this, fails] {
            become(fails ? Status::failed : Status::readyToPlay, stage_.itemError);
        });
    }
    void become(Status status, const QString& error = {}) {
        status_ = status;
        error_ = error;
        for (const auto& [kind, loaded] : std::exchange(earlyCalls_, {}))
            loaded(kind == MediaGroup::Kind::legible ? stage_.subtitles : stage_.audio);
        Q_EMIT statusChanged();
    }

  private:
    Stage& stage_;
    QUrl file_;
    Status status_ = Status::unknown;
    QString error_;
    Clock::Timer loading_;
    std::vector<std::pair<MediaGroup::Kind, GroupLoaded>> earlyCalls_;  // answered without further reading

  public:
    QMap<MediaGroup::Kind, MediaOption> chosen;
};

class ScriptedPlayer : public Player {
  public:
    ScriptedPlayer(Stage& stage, size_t number) : stage_(stage), number_(QString::number(number)) {}
    ~ScriptedPlayer() override { note(u"gone"_s); }

    bool pausesAtEnd = false;
    bool preventsDisplaySleep = false;
    bool allowsExternalPlayback = false;
    int timesAttached = 0;

    [[nodiscard]] std::shared_ptr<PlayerItem> currentItem() const override { return item_; }
    void replaceCurrentItem(std::shared_ptr<PlayerItem> item) override {
        if (item || item_) note(item ? u"item "_s + item->file().fileName() : u"empty"_s);
        item_ = std::move(item);
        setPosition(0);
        if (item_) static_cast<ScriptedItem&>(*item_).load();
    }
    void play() override {
        note(u"play"_s);
        if (isExternal_ && ignoredPlays_++ < stage_.ignoredPlays) return;
        become(isAttached_ && !isExternal_ ? TimeControlStatus::waiting : TimeControlStatus::playing);
        const auto after = stage_.takenAfter.constFind(number_.toInt());
        if (isExternal_ || after == stage_.takenAfter.cend()) return;
        taking_ = stage_.clock.after(seconds(*after), [this] { setExternal(true); });
    }
    void pause() override {
        if (status_ != TimeControlStatus::paused) note(u"pause"_s);
        become(TimeControlStatus::paused);
    }
    [[nodiscard]] TimeControlStatus timeControlStatus() const override { return status_; }
    [[nodiscard]] std::optional<double> currentTime() const override {
        if (!item_) return std::nullopt;
        if (status_ != TimeControlStatus::playing) return position_;
        return position_ + std::chrono::duration<double>(stage_.clock.now() - positionAt_).count();
    }
    void seek(double target, Tolerance tolerance, Seeked seeked) override {
        note(u"seek "_s + QString::number(target) + (tolerance.before == 0 ? u" exactly"_s : u""_s) +
             (tolerance.before > 0 && tolerance.after == 0 ? u" or before"_s : u""_s));
        if (seeked_)
            QMetaObject::invokeMethod(
                this, [interrupted = seeked_] { interrupted(false); }, Qt::QueuedConnection);
        seeked_ = std::move(seeked);
        if (!stage_.answersSeeks) return;
        seeking_ = stage_.clock.after(seconds(stage_.seekTakes), [this, target] {
            setPosition(target);
            std::exchange(seeked_, {})(true);
        });
    }
    [[nodiscard]] Observation observeTime(std::chrono::nanoseconds interval, TimeObserver observer) override {
        const auto ticker = std::make_shared<Ticker>(Ticker{interval, std::move(observer), {}});
        tickLater(ticker);
        return Observation(ticker);
    }
    [[nodiscard]] bool isExternalPlaybackActive() const override { return isExternal_; }
    [[nodiscard]] std::optional<int> externalPlaybackType() const override { return std::nullopt; }
    void setAllowsExternalPlayback(bool on) override { allowsExternalPlayback = on; }
    bool setOutputContext(OutputContext* context) override {
        isAttached_ = context != nullptr;
        if (timesAttached++ > 0) note(u"attach"_s);
        return true;
    }
    void setPausesAtEnd(bool on) override { pausesAtEnd = on; }
    void setPreventsDisplaySleep(bool on) override { preventsDisplaySleep = on; }

    // What happens at the device.
    void setExternal(bool on) {
        isExternal_ = on;
        Q_EMIT externalPlaybackActiveChanged();
        if (status_ == TimeControlStatus::waiting) become(TimeControlStatus::playing);
    }
    void become(TimeControlStatus status) {
        if (status == status_) return;
        setPosition(currentTime().value_or(0));
        status_ = status;
        Q_EMIT timeControlStatusChanged();
    }
    void setPosition(double position) {
        position_ = position;
        positionAt_ = stage_.clock.now();
    }

  private:
    struct Ticker {
        std::chrono::nanoseconds interval;
        TimeObserver observer;
        Clock::Timer timer;
    };

    void tickLater(const std::weak_ptr<Ticker>& weak) {
        const auto tick = [this, weak] {
            const auto ticker = weak.lock();
            tickLater(weak);
            if (status_ == TimeControlStatus::playing) ticker->observer(currentTime());
        };
        const auto ticker = weak.lock();
        ticker->timer = stage_.clock.after(ticker->interval, tick);
    }
    void note(const QString& what) { stage_.note(number_ + u' ' + what); }

    Stage& stage_;
    QString number_;
    std::shared_ptr<PlayerItem> item_;
    TimeControlStatus status_ = TimeControlStatus::paused;
    double position_ = 0;
    Clock::Instant positionAt_{};
    bool isAttached_ = false;
    bool isExternal_ = false;
    int ignoredPlays_ = 0;
    Seeked seeked_;
    Clock::Timer seeking_;
    Clock::Timer taking_;
};

inline std::shared_ptr<Player> Stage::makePlayer() {
    auto player = std::make_shared<ScriptedPlayer>(*this, players.size() + 1);
    players.push_back(player);
    return player;
}

inline std::shared_ptr<PlayerItem> Stage::makeItem(const QUrl& file) {
    return std::make_shared<ScriptedItem>(*this, file);
}

}  // namespace velmora::test
