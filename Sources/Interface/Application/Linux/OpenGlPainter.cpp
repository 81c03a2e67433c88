// What the player shows, drawn by mpv into a framebuffer of the window's.
//
// QQuickFramebufferObject and no node or texture of our own: it makes mpv's renderer on the thread and with
// the context that the window is drawn with, takes it down there before either goes, follows the item's size
// in pixels, and draws nothing while the item is not to be seen.
#include "Interface/Application/Linux/LivePainter.h"
#include "Interface/Application/Linux/LivePicture.h"
#include "Platform/Linux/MpvPicture.h"

#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLPaintDevice>
#include <QQuickFramebufferObject>
#include <QQuickOpenGLUtils>
#include <QQuickWindow>

#include <utility>

namespace velmora::LivePainter {

namespace {

void* functionOf(void* /*context*/, const char* name) {
    return reinterpret_cast<void*>(QOpenGLContext::currentContext()->getProcAddress(name));
}

bool hasGraphicsProcessor() {
    const GLubyte* const name = QOpenGLContext::currentContext()->functions()->glGetString(GL_RENDERER);
    const QByteArrayView renderer(reinterpret_cast<const char*>(name));
    return !renderer.contains("llvmpipe") && !renderer.contains("softpipe");
}

/// Lives on the thread that draws, as long as the scene graph keeps it, which may be longer than its item.
class Renderer : public QQuickFramebufferObject::Renderer {
  public:
    Renderer(std::shared_ptr<mpv_handle> mpv, News news, bool always, MpvPicture::Changed changed)
        : mpv_(std::move(mpv)), news_(std::move(news)), changed_(std::move(changed)), always_(always) {}

  protected:
    void synchronize(QQuickFramebufferObject* item) override {
        radius_ = LivePicture::radius * item->window()->effectiveDevicePixelRatio();
    }

    void render() override {
        // Not before, for until then the main thread waits.
        if (mpv_) start(std::exchange(mpv_, nullptr));
        if (picture_ && picture_->takeNews() && !std::exchange(hasBegun_, true)) news_.begins();
        if (!hasBegun_) return clear();
        QOpenGLFramebufferObject& target = *framebufferObject();
        picture_->draw(static_cast<int>(target.handle()), target.size());
        QQuickOpenGLUtils::resetOpenGLState();
        target.bind();
        QOpenGLPaintDevice device(target.size());
        corners_.cut(device, target.size(), radius_);
        QQuickOpenGLUtils::resetOpenGLState();
    }

  private:
    void start(std::shared_ptr<mpv_handle> mpv) {
        if (always_ || hasGraphicsProcessor())
            picture_ = MpvPicture::withOpenGl(std::move(mpv), functionOf, changed_);
        QQuickOpenGLUtils::resetOpenGLState();
        if (!picture_) news_.refuses();
    }

    static void clear() {
        QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
        gl.glClearColor(0, 0, 0, 0);
        gl.glClear(GL_COLOR_BUFFER_BIT);
    }

    std::shared_ptr<mpv_handle> mpv_;  ///< until there is a picture of it
    News news_;
    MpvPicture::Changed changed_;
    const bool always_;
    Corners corners_;
    double radius_ = 0;
    bool hasBegun_ = false;
    std::unique_ptr<MpvPicture> picture_;
};

class Item : public QQuickFramebufferObject {
  public:
    Item(std::shared_ptr<mpv_handle> mpv, News news, bool always)
        : mpv_(std::move(mpv)), news_(std::move(news)), always_(always) {}

    [[nodiscard]] Renderer* createRenderer() const override {
        auto* const self = const_cast<Item*>(this);
        return new LivePainter::Renderer(mpv_, news_, always_, later<QQuickItem>(self, &QQuickItem::update));
    }

  private:
    std::shared_ptr<mpv_handle> mpv_;
    News news_;
    const bool always_;
};

}  // namespace

std::unique_ptr<QQuickItem> withOpenGl(std::shared_ptr<mpv_handle> mpv, News news, bool always) {
    return std::make_unique<Item>(std::move(mpv), std::move(news), always);
}

}  // namespace velmora::LivePainter
