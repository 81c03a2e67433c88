#pragma once

#include <QSize>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

struct mpv_handle;
struct mpv_render_context;
struct mpv_render_param;  // NOLINT(readability-identifier-naming): mpv's

namespace velmora {

/// Draws what a player shows. There is one at a time for each mpv: making another waits a while for the end
/// of the one before. Used and destroyed on the thread it was made on, where both may take some hundredths of
/// a second; keeps mpv alive.
class MpvPicture {
  public:
    /// There may be something new to draw. Called on any thread; must not call back.
    using Changed = std::function<void()>;
    using GlFunctions = void* (*)(void* context, const char* name);

    /// For `draw` into memory. Null when mpv refuses, which is logged.
    [[nodiscard]] static std::unique_ptr<MpvPicture> inMemory(std::shared_ptr<mpv_handle> mpv,
                                                              Changed changed);
    /// For `draw` into a framebuffer of the OpenGL context that is current, here and whenever it is used.
    /// Null when mpv refuses, which is logged.
    [[nodiscard]] static std::unique_ptr<MpvPicture> withOpenGl(std::shared_ptr<mpv_handle> mpv,
                                                                GlFunctions functions, Changed changed);
    ~MpvPicture();
    MpvPicture(const MpvPicture&) = delete;
    MpvPicture& operator=(const MpvPicture&) = delete;

    /// To be called after `Changed`. Whether there is a picture now that was not there before.
    [[nodiscard]] bool takeNews();
    /// Whether there ever was a picture; without one the others draw black.
    [[nodiscard]] bool hasPicture() const { return hasPicture_; }

    /// Fills the pixels: blue, green and red, and a byte that is left open. The stride is in bytes. False
    /// when it fails.
    [[nodiscard]] bool draw(uchar* pixels, QSize size, std::size_t stride);
    /// The picture's upper edge comes to lie at y = 0.
    void draw(int framebuffer, QSize size);

  private:
    MpvPicture(std::shared_ptr<mpv_handle> mpv, Changed changed);
    [[nodiscard]] bool start(mpv_render_param* parameters, std::chrono::milliseconds patience);
    void skipPicture();

    std::shared_ptr<mpv_handle> mpv_;
    Changed changed_;
    mpv_render_context* context_ = nullptr;
    std::atomic<bool> hasNews_ = false;
    bool hasPicture_ = false;
};

}  // namespace velmora
