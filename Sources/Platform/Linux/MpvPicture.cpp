#include "Platform/Linux/MpvPicture.h"

#include "Diagnostics/Log.h"

#include <mpv/client.h>
#include <mpv/render_gl.h>

#include <array>
#include <condition_variable>
#include <future>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Who has a picture.
class Drawn {
  public:
    /// It stays for good: pictures may end while the process does.
    static Drawn& all() {
        static auto* const drawn = new Drawn;
        return *drawn;
    }
    /// Waits until the mpv has no picture. False when that takes too long.
    [[nodiscard]] bool begin(mpv_handle* mpv, std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex_);
        if (!ended_.wait_for(lock, patience, [&] { return !drawn_.contains(mpv); })) return false;
        drawn_.insert(mpv);
        return true;
    }
    void end(mpv_handle* mpv) {
        const std::lock_guard lock(mutex_);
        drawn_.erase(mpv);
        ended_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<mpv_handle*> drawn_;
};

}  // namespace

std::unique_ptr<MpvPicture> MpvPicture::inMemory(std::shared_ptr<mpv_handle> mpv, Changed changed) {
    std::unique_ptr<MpvPicture> picture(new MpvPicture(std::move(mpv), std::move(changed)));
    std::string api = MPV_RENDER_API_TYPE_SW;
    std::array<mpv_render_param, 2> parameters{{{MPV_RENDER_PARAM_API_TYPE, api.data()}, {}}};
    if (!picture->start(parameters.data(), 10s)) return nullptr;
    return picture;
}

std::unique_ptr<MpvPicture> MpvPicture::withOpenGl(std::shared_ptr<mpv_handle> mpv, GlFunctions functions,
                                                   Changed changed) {
    std::unique_ptr<MpvPicture> picture(new MpvPicture(std::move(mpv), std::move(changed)));
    std::string api = MPV_RENDER_API_TYPE_OPENGL;
    mpv_opengl_init_params openGl{.get_proc_address = functions, .get_proc_address_ctx = nullptr};
    std::array<mpv_render_param, 3> parameters{
        {{MPV_RENDER_PARAM_API_TYPE, api.data()}, {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &openGl}, {}}};
    // The window waits with it.
    if (!picture->start(parameters.data(), 200ms)) return nullptr;
    return picture;
}

MpvPicture::MpvPicture(std::shared_ptr<mpv_handle> mpv, Changed changed)
    : mpv_(std::move(mpv)), changed_(std::move(changed)) {}

bool MpvPicture::start(mpv_render_param* parameters, std::chrono::milliseconds patience) {
    if (!mpv_) return false;
    if (!Drawn::all().begin(mpv_.get(), patience)) {
        logger().error(u"player: no picture: another one does not end"_s);
        return false;
    }
    if (const int error = mpv_render_context_create(&context_, mpv_.get(), parameters); error < 0) {
        logger().error(u"player: no picture: "_s + QString::fromUtf8(mpv_error_string(error)));
        context_ = nullptr;
        Drawn::all().end(mpv_.get());
        return false;
    }
    const auto tell = [](void* self) {
        auto* const picture = static_cast<MpvPicture*>(self);
        picture->hasNews_ = true;
        picture->changed_();
    };
    mpv_render_context_set_update_callback(context_, tell, this);
    hasNews_ = false;  // so far it was but the greeting
    // Only now, and at once: without somebody to draw for, mpv would give up the movie's pictures altogether,
    // and what is to be set later may come after the destructor, which does not wait in the same queue.
    mpv_set_property_string(mpv_.get(), "vo", "libmpv");
    return true;
}

MpvPicture::~MpvPicture() {
    if (!context_) return;
    mpv_render_context_set_update_callback(context_, nullptr, nullptr);
    // Before the context goes, and not a moment after: mpv drops the pictures for good otherwise. Meanwhile
    // it may want to get rid of one, and would wait for that for a fifth of a second.
    const auto changed =
        std::async(std::launch::async, [this] { mpv_set_property_string(mpv_.get(), "vo", "null"); });
    while (changed.wait_for(1ms) != std::future_status::ready) skipPicture();
    mpv_render_context_free(context_);
    Drawn::all().end(mpv_.get());
}

void MpvPicture::skipPicture() {
    int skips = 1;
    int waits = 0;
    std::array<mpv_render_param, 3> parameters{
        {{MPV_RENDER_PARAM_SKIP_RENDERING, &skips}, {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waits}, {}}};
    mpv_render_context_render(context_, parameters.data());
}

bool MpvPicture::takeNews() {
    // What this returns forgets a picture that nobody has drawn for a fifth of a second.
    mpv_render_context_update(context_);
    const bool isNew = hasNews_.exchange(false);
    hasPicture_ = hasPicture_ || isNew;
    return isNew;
}

bool MpvPicture::draw(uchar* pixels, QSize size, std::size_t stride) {
    std::array<int, 2> extent{size.width(), size.height()};
    std::string format = "bgr0";
    int waits = 0;
    std::array<mpv_render_param, 6> parameters{{{MPV_RENDER_PARAM_SW_SIZE, extent.data()},
                                                {MPV_RENDER_PARAM_SW_FORMAT, format.data()},
                                                {MPV_RENDER_PARAM_SW_STRIDE, &stride},
                                                {MPV_RENDER_PARAM_SW_POINTER, pixels},
                                                {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waits},
                                                {}}};
    return mpv_render_context_render(context_, parameters.data()) >= 0;
}

void MpvPicture::draw(int framebuffer, QSize size) {
    mpv_opengl_fbo target{.fbo = framebuffer, .w = size.width(), .h = size.height(), .internal_format = 0};
    int flips = 0;
    int waits = 0;
    std::array<mpv_render_param, 4> parameters{{{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                                {MPV_RENDER_PARAM_FLIP_Y, &flips},
                                                {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waits},
                                                {}}};
    mpv_render_context_render(context_, parameters.data());
}

}  // namespace velmora
