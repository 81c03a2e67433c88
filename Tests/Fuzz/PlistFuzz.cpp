// Whatever decodes can be judged as a report and as an event, and survives being written and read again.
#include "Sender/PlaybackReport.h"
#include "Sender/Plist.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velmora;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto value = Plist::decode(bytes);
    if (!value) return 0;
    const PlaybackReport report = PlaybackReport::fromPlist(*value);
    if (!std::isfinite(report.position) || !(report.duration >= 0)) std::abort();
    (void)PlaybackEvent::fromPlist(*value);
    if (!Plist::decode(Plist::encodeBinary(*value))) std::abort();
    return 0;
}
