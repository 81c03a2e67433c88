#include "Sender/Session/MediaRemote/RemotePlayer.h"

#include <cmath>

namespace velmora {

namespace {

constexpr double differsAtMost = 0.5;     // seconds, between its idea of our movie's length and ours
constexpr double clocksDifferAtMost = 5;  // seconds
constexpr char airPlayClient[] = "com.apple.TVAirPlay";

bool isTime(double seconds) {
    return std::isfinite(seconds) && std::abs(seconds) < 1'000'000;
}

}  // namespace

void RemotePlayer::expect(double duration) {
    *this = RemotePlayer();
    duration_ = duration;
}

bool RemotePlayer::take(const remote::Envelope& message, double wallClock) {
    if (duration_ <= 0) return false;
    bool isAboutOurs = false;
    if (message.has_set_state() && !isForeign(message.set_state())) {
        const auto& state = message.set_state();
        for (const auto& item : state.queue().items()) isAboutOurs = takeItem(item) || isAboutOurs;
        if (state.has_now_playing()) isAboutOurs = takeNowPlaying(state.now_playing()) || isAboutOurs;
        if (isAboutOurs && state.has_player_path()) path_ = state.player_path();
    }
    if (message.has_update_content_item() && !isForeign(message.update_content_item())) {
        const auto& update = message.update_content_item();
        for (const auto& item : update.items()) isAboutOurs = takeItem(item) || isAboutOurs;
        if (isAboutOurs && update.has_player_path()) path_ = update.player_path();
    }
    return isAboutOurs && resample(wallClock);
}

// Of another program there; one that is not named may be ours.
template <class Message>
bool RemotePlayer::isForeign(const Message& message) {
    const std::string& client = message.player_path().client().bundle();
    return !client.empty() && client != airPlayClient;
}

bool RemotePlayer::isOurs(const std::optional<double>& duration) const {
    return duration && std::abs(*duration - duration_) <= differsAtMost;
}

bool RemotePlayer::takeItem(const remote::ContentItem& item) {
    const auto& metadata = item.metadata();
    const bool tellsDuration = metadata.has_duration();
    const bool isKnown = !item_.empty() && item.identifier() == item_;
    const bool isNew = tellsDuration && isOurs(metadata.duration());
    if (!isKnown && !isNew) return false;
    if (tellsDuration && !isNew) return false;
    item_ = item.identifier();
    if (tellsDuration) told_.duration = metadata.duration();
    if (metadata.has_elapsed()) told_.elapsed = metadata.elapsed();
    if (metadata.has_rate()) told_.rate = metadata.rate();
    if (metadata.has_elapsed_timestamp()) told_.stamp = metadata.elapsed_timestamp();
    return true;
}

bool RemotePlayer::takeNowPlaying(const remote::NowPlaying& info) {
    if (info.has_duration() ? !isOurs(info.duration()) : !told_.duration.has_value()) return false;
    if (info.has_duration()) told_.duration = info.duration();
    if (info.has_elapsed()) told_.elapsed = info.elapsed();
    if (info.has_rate()) told_.rate = info.rate();
    if (info.has_timestamp()) told_.stamp = info.timestamp();
    return true;
}

// The same figures again are no news: they are as old as when they were told first.
bool RemotePlayer::resample(double wallClock) {
    if (!told_.elapsed || !told_.rate || !isTime(*told_.elapsed) || !std::isfinite(*told_.rate)) return false;
    if (sampled_ == told_) return false;
    sampled_ = told_;
    const double age = told_.stamp ? wallClock - *told_.stamp : 0;
    sample_ = Sample{.position = *told_.elapsed,
                     .age = age >= 0 && age <= clocksDifferAtMost ? age : 0,
                     .rate = *told_.rate};
    return true;
}

}  // namespace velmora
