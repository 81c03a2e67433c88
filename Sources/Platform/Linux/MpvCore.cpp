#include "Platform/Linux/MpvCore.h"

#include "Diagnostics/Log.h"
#include "Platform/Linux/Graphics.h"

#include <QCoreApplication>

#include <dlfcn.h>
#include <mpv/client.h>

#include <chrono>
#include <future>
#include <mutex>
#include <utility>
#include <vector>

namespace velmora::MpvCore {

using namespace Qt::StringLiterals;

namespace {

void dropComplaint(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                   const char* /*format*/, ...) {}

/// The sound library has no setting for it.
void quietenSound() {
    void* const library = dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
    if (!library) return;
    using TakeComplaints = int (*)(decltype(&dropComplaint));
    if (void* const found = dlsym(library, "snd_lib_error_set_handler"))
        reinterpret_cast<TakeComplaints>(found)(dropComplaint);
    dlclose(library);
}

}  // namespace

void quietenLibraries() {
    for (const auto& [name, value] : {std::pair("PIPEWIRE_DEBUG", "0"), {"LIBVA_MESSAGING_LEVEL", "0"}}) {
        if (!qEnvironmentVariableIsSet(name)) qputenv(name, value);
    }
}

mpv_handle* start(bool isMute, const QString& hardwareDecoding) {
    mpv_handle* const mpv = mpv_create();
    if (!mpv) {
        logger().error(u"player: libmpv does not start"_s);
        return nullptr;
    }
    quietenSound();
    const std::pair<const char*, QByteArray> settings[] = {
        {"config", "no"},
        {"terminal", "no"},
        {"load-scripts", "no"},
        // Its own scripts, each of which has a thread and an interpreter.
        {"load-auto-profiles", "no"},
        {"load-osd-console", "no"},
        {"load-stats-overlay", "no"},
        {"ytdl", "no"},
        // A movie is one file; whatever else it names is not to be opened on its word.
        {"access-references", "no"},
        {"ordered-chapters", "no"},
        {"osc", "no"},
        {"osd-level", "0"},
        {"idle", "yes"},
        {"pause", "yes"},
        {"keep-open", "yes"},
        {"hr-seek", "yes"},
        // Without it a seek to just before an open group of pictures lands some frames late.
        {"hr-seek-demuxer-offset", "0.25"},
        // Files beside the movie are in it already, where they belong to it.
        {"sub-auto", "no"},
        {"audio-file-auto", "no"},
        {"cover-art-auto", "no"},
        {"audio-client-name", "Velmora"},
        // What else there is to play sound with is for studios, or older.
        {"ao", isMute ? "null" : "pipewire,pulse,alsa"},
        {"audio-fallback-to-null", "yes"},
        // A picture fills the place it has, which is of its own ratio but for rounding.
        {"panscan", "1"},
        // It is mostly drawn much smaller than it is.
        {"dscale", "mitchell"},
        {"correct-downscaling", "yes"},
        // Whoever draws does so at once.
        {"video-timing-offset", "0"},
        {"vo", "null"},
        {"hwdec", Graphics::hasProcessor() ? hardwareDecoding.toUtf8() : "no"},
        // The others' decoders hand over in memory what they have decoded.
        {"gpu-hwdec-interop", Graphics::hasNvidia() ? "auto" : "no"},
    };
    for (const auto& [name, value] : settings) mpv_set_option_string(mpv, name, value.constData());
    if (const int error = mpv_initialize(mpv); error < 0) {
        logger().error(u"player: libmpv does not start: "_s + QString::fromUtf8(mpv_error_string(error)));
        mpv_terminate_destroy(mpv);
        return nullptr;
    }
    mpv_request_log_messages(mpv, "error");
    mpv_observe_property(mpv, 0, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(mpv, 0, "eof-reached", MPV_FORMAT_FLAG);
    return mpv;
}

namespace {

/// The threads of `doAside`.
class Aside {
  public:
    static Aside& all() {
        static Aside aside;
        return aside;
    }
    Aside() {
        // Before what they may still use goes, as far as there is an application object.
        qAddPostRoutine([] { all().wait(); });
    }
    ~Aside() { wait(); }

    void begin(std::move_only_function<void()> work) {
        const std::lock_guard lock(mutex_);
        std::erase_if(begun_, [](const std::future<void>& one) {
            return one.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
        begun_.push_back(std::async(std::launch::async, [work = std::move(work)]() mutable {
            work();
            work = nullptr;  // what it keeps ends here too
        }));
    }
    /// For what comes of it too.
    void wait() {
        while (!take().empty()) {
        }
    }

  private:
    /// Whoever lets go of what this returns waits.
    std::vector<std::future<void>> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(begun_, {});
    }

    std::mutex mutex_;
    std::vector<std::future<void>> begun_;
};

}  // namespace

void doAside(std::move_only_function<void()> work) {
    Aside::all().begin(std::move(work));
}

void end(mpv_handle* mpv) {
    doAside([mpv] { mpv_terminate_destroy(mpv); });
}

}  // namespace velmora::MpvCore
