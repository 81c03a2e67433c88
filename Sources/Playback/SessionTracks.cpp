// The tracks of what plays, and which of them is on.
#include "Diagnostics/Log.h"
#include "Playback/Session.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// By then a handover is over, and reading the tracks no longer competes with it.
constexpr Clock::Duration tracksDelay = 4s;

}  // namespace

QCoro::Task<> Session::loadTracks(std::weak_ptr<PlayerItem> item) {
    const Ticket ticket(this);
    const Completion<bool> pause = waits_.sleep(tracksDelay);
    co_await pause;
    if (!ticket.isForThisPlayer() || !isPlayed(item)) co_return;
    const std::optional<MediaGroup> subtitles = co_await loadGroup(MediaGroup::Kind::legible);
    if (!ticket.isForThisPlayer() || !isPlayed(item)) co_return;
    const std::optional<MediaGroup> audio = co_await loadGroup(MediaGroup::Kind::audible);
    if (!ticket.isForThisPlayer() || !isPlayed(item)) co_return;
    showTracks(subtitles, audio);
}

bool Session::isPlayed(const std::weak_ptr<PlayerItem>& item) const {
    const auto current = player_->currentItem();
    return current && current == item.lock();
}

QCoro::Task<std::optional<MediaGroup>> Session::loadGroup(MediaGroup::Kind kind) {
    const auto group = std::make_shared<std::optional<MediaGroup>>();
    const Completion<bool> answer = waits_.answer();
    const PlayerItem::GroupLoaded loaded = [group, answer](const std::optional<MediaGroup>& found) {
        *group = found;
        answer.complete(true);
    };
    player_->currentItem()->loadGroup(kind, loaded);
    co_await answer;
    co_return *group;
}

// A television begins with what is selected before it is told to play, and every later change interrupts it:
// it cannot wait for `loadTracks`. Asking costs nothing here, as the item answers once it is read anyway.
void Session::preselectTracks(const std::shared_ptr<PlayerItem>& item, Place place) {
    for (const auto kind : {MediaGroup::Kind::legible, MediaGroup::Kind::audible}) {
        const bool mayTakeDefault = place == Place::television && kind == MediaGroup::Kind::legible;
        if (!chosenTracks_.contains(kind) && !mayTakeDefault) continue;
        const QPointer<Session> self(this);
        const std::weak_ptr<PlayerItem> weak = item;
        item->loadGroup(kind, [self, weak](const std::optional<MediaGroup>& group) {
            const auto loaded = weak.lock();
            if (self && loaded && group) self->preselect(*loaded, *group);
        });
    }
}

void Session::preselect(PlayerItem& item, const MediaGroup& group) {
    if (chosenTracks_.contains(group.kind)) return item.select(chosenTracks_.value(group.kind), group.kind);
    const auto* playback = phase_.ready();
    if (!playback || item.selected(group.kind)) return;
    (void)switchOnSubtitles(item, group, Tracks::names(group, std::nullopt, playback->subtitleTitles));
}

std::optional<MediaOption> Session::switchOnSubtitles(PlayerItem& item, const MediaGroup& subtitles,
                                                      const Tracks::Names& names) {
    auto chosen = Tracks::defaultSubtitle(subtitles, names, world_.preferredLanguages());
    if (!chosen) return std::nullopt;
    item.select(chosen, MediaGroup::Kind::legible);
    logger().notice(u"subtitles: switched on "_s + chosen->displayName);
    return chosen;
}

void Session::showTracks(const std::optional<MediaGroup>& subtitles, const std::optional<MediaGroup>& audio) {
    const std::shared_ptr<PlayerItem> item = player_->currentItem();
    const auto* playback = phase_.ready();
    trackNames_ = Tracks::names(subtitles, audio, playback ? playback->subtitleTitles : QStringList());
    subtitleGroup_ = subtitles;
    audioGroup_ = audio && audio->options.size() >= 2 ? audio : std::nullopt;
    selectedAudio_ = audio ? item->selected(MediaGroup::Kind::audible) : std::nullopt;
    selectedSubtitle_ = subtitles ? item->selected(MediaGroup::Kind::legible) : std::nullopt;
    const bool isOffByChoice = chosenTracks_.contains(MediaGroup::Kind::legible);
    if (subtitles && !selectedSubtitle_ && !isOffByChoice)
        selectedSubtitle_ = switchOnSubtitles(*item, *subtitles, trackNames_);
    Q_EMIT tracksChanged();
}

void Session::clearTracks() {
    subtitleGroup_ = {};
    audioGroup_ = {};
    selectedSubtitle_ = {};
    selectedAudio_ = {};
    Q_EMIT tracksChanged();
}

void Session::select(const std::optional<MediaOption>& option, MediaGroup::Kind kind) {
    const std::shared_ptr<PlayerItem> item = player_->currentItem();
    if (!item) return;
    chosenTracks_.insert(kind, option);
    item->select(option, kind);
    if (kind == MediaGroup::Kind::legible && subtitleGroup_) selectedSubtitle_ = option;
    if (kind == MediaGroup::Kind::audible && audioGroup_) selectedAudio_ = option;
    Q_EMIT tracksChanged();
}

}  // namespace velmora
