#include "Terminal/TelevisionFinder.h"

#include "Platform/Linux/TelevisionNetwork.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/Discovery/Naming.h"

#include <optional>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Receivers answer a browser within a second; one that sleeps behind a proxy takes a little longer.
constexpr auto searchPatience = 4s;

/// One that cannot be a name only: "tv" may be both, "tv.local" and "192.168.1.20" are addresses.
std::optional<Receiver> addressFrom(const QString& text) {
    const auto typed = Receiver::fromText(text);
    const bool isAddress = typed && (!typed->address.isNull() || text.contains(u'.') || text.contains(u':'));
    return isAddress ? std::optional(*typed) : std::nullopt;
}

TelevisionFinder::Found takingVideo(TelevisionFinder::Found found) {
    if (!found) return found;
    const auto takes = found->takesVideo();
    if (takes) return found;
    return std::unexpected(u"%1 %2."_s.arg(found->name, takes.error()));
}

}  // namespace

QCoro::Task<TelevisionFinder::Found> TelevisionFinder::find(QString text) {
    if (const auto typed = addressFrom(text)) {
        const Found resolved = co_await network_.resolve(*typed);
        co_return takingVideo(resolved);
    }
    const Found named = co_await search(text);
    co_return takingVideo(named);
}

QCoro::Task<TelevisionFinder::Found> TelevisionFinder::search(QString text) {
    const Found announced = co_await discovery_.find(text, searchPatience);
    if (announced) co_return announced;
    // It may be asleep, or nothing may be seen here at all: then it is where it was last.
    for (const Receiver& known : known_.receivers())
        if (Naming::isCalled(known, text)) co_return known;
    const auto host = Receiver::fromText(text);
    if (!host) co_return announced;
    const Found looked = co_await network_.resolve(*host);
    if (looked) co_return looked;
    co_return announced;
}

}  // namespace velmora
