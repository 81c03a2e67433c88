#pragma once

#include <QString>

struct mpv_handle;

/// An mpv, as players here need it. Any thread, unless said otherwise.
namespace velmora::MpvCore {

/// Before the first `start`, on the main thread: so that mpv's libraries do not complain to standard error.
void quietenLibraries();

/// Takes a good tenth of a second. `hardwareDecoding` is mpv's `hwdec`. Null when mpv does not start, which
/// is logged.
[[nodiscard]] mpv_handle* start(bool isMute, const QString& hardwareDecoding);

/// Waits for nothing, but the process does not end before mpv has.
void end(mpv_handle* mpv);

}  // namespace velmora::MpvCore
