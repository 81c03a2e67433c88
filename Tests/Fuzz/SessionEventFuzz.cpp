// A receiver's word about its player: whatever can be read leaves the player's state with times that are
// times.
#include "Sender/Plist.h"
#include "Sender/Session/NtpResponder.h"
#include "Sender/Session/PlayerState.h"
#include "Sender/Session/SessionMessages.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velmora;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto answer = NtpResponder::answer(bytes, {}, {}); answer && answer->size() != 32) std::abort();
    const auto outer = Plist::decode(bytes);
    if (!outer) return 0;
    const auto content = SessionMessages::unwrapped(outer->toMap());
    const auto message = content ? Plist::decode(*content) : outer;
    if (!message) return 0;
    (void)SessionMessages::firstStream(*message);
    const auto event = SessionEvent::fromPlist(message->toMap());
    if (!event) return 0;
    PlayerState player;
    player.begin(QStringLiteral("U"), 0, 120);
    player.take(*event, {});
    const PlaybackReport report = player.report(Clock::Instant(std::chrono::seconds(5)));
    if (!std::isfinite(report.position) || !(report.duration >= 0)) std::abort();
    return 0;
}
