#pragma once

#include <QString>

#include <functional>

struct mpv_handle;

/// An mpv, as players here need it. Any thread, unless said otherwise.
namespace velmora::MpvCore {

/// Before the first `start`, on the main thread: so that mpv's libraries do not complain to standard error.
void quietenLibraries();

/// Takes a good tenth of a second. `hardwareDecoding` is mpv's `hwdec`. Null when mpv does not start, which
/// is logged.
[[nodiscard]] mpv_handle* start(bool isMute, const QString& hardwareDecoding);

/// Does on a thread of its own what has to wait for mpv, and nobody else should. The process does not end
/// before it is done.
void doAside(std::move_only_function<void()> work);

/// Aside.
void end(mpv_handle* mpv);

}  // namespace velmora::MpvCore
