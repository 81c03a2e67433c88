#include "Interface/Application/Linux/LivePicture.h"

#include "Platform/Linux/MpvPicture.h"

#include <QGuiApplication>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLPaintDevice>
#include <QPainter>
#include <QPointer>
#include <QQuickFramebufferObject>
#include <QQuickOpenGLUtils>
#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

/// Opaque where the picture is to be seen. Cutting the corners with it works alike for pixels in memory and
/// on the graphics card, and keeps their edges smooth.
QImage cornerMask(QSize size, double radius) {
    QImage mask(size, QImage::Format_ARGB32_Premultiplied);
    mask.fill(Qt::transparent);
    QPainter painter(&mask);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(QPointF(), size), radius, radius);
    return mask;
}

class RoundMask {
  public:
    void cut(QPaintDevice& picture, QSize size, double radius) {
        if (mask_.size() != size || std::exchange(radius_, radius) != radius)
            mask_ = cornerMask(size, radius);
        QPainter painter(&picture);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.drawImage(0, 0, mask_);
    }

  private:
    QImage mask_;
    double radius_ = 0;
};

/// Calls the item's method on the main thread, if it is still there by then.
template <class Item>
MpvPicture::Changed later(Item* item, void (Item::*method)()) {
    return [item = QPointer<Item>(item), method] {
        const auto call = [item, method] {
            if (item) (item->*method)();
        };
        QMetaObject::invokeMethod(qGuiApp, call, Qt::QueuedConnection);
    };
}

class MemoryPainter : public QQuickItem {
  public:
    explicit MemoryPainter(std::shared_ptr<mpv_handle> mpv)
        : picture_(MpvPicture::inMemory(std::move(mpv), later(this, &MemoryPainter::takeNews))) {
        setFlag(ItemHasContents);
    }

  protected:
    void geometryChange(const QRectF& now, const QRectF& before) override {
        QQuickItem::geometryChange(now, before);
        if (now.size() != before.size()) draw();
    }
    void itemChange(ItemChange change, const ItemChangeData& value) override {
        if (change == ItemDevicePixelRatioHasChanged) draw();
        QQuickItem::itemChange(change, value);
    }
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/) override {
        auto* node = static_cast<QSGImageNode*>(old);
        if (image_.isNull()) {
            delete node;
            return nullptr;
        }
        if (!node) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
            node->setFiltering(QSGTexture::Linear);
        }
        if (std::exchange(isNew_, false)) node->setTexture(window()->createTextureFromImage(image_));
        node->setRect(boundingRect());
        return node;
    }

  private:
    void takeNews() {
        if (picture_->takeNews()) draw();
    }
    void draw() {
        if (!picture_ || !picture_->hasPicture() || !window()) return;
        const double scale = window()->effectiveDevicePixelRatio();
        const QSize pixels = (size() * scale).toSize();
        if (pixels.isEmpty()) return;
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        if (!picture_->draw(image.bits(), pixels, static_cast<std::size_t>(image.bytesPerLine()))) return;
        // mpv leaves the fourth byte open.
        auto* const words = reinterpret_cast<quint32*>(image.bits());
        std::transform(words, words + image.sizeInBytes() / 4, words,
                       [](quint32 word) { return word | 0xFF000000U; });
        mask_.cut(image, pixels, LivePicture::radius * scale);
        image_ = image;
        isNew_ = true;
        update();
    }

    RoundMask mask_;
    QImage image_;
    bool isNew_ = false;
    std::unique_ptr<MpvPicture> picture_;  ///< last: it may tell of news until it is gone
};

void* glFunction(void* /*context*/, const char* name) {
    return reinterpret_cast<void*>(QOpenGLContext::currentContext()->getProcAddress(name));
}

/// Lives on the render thread, as long as the scene graph keeps it, which may be longer than its item.
class GlRenderer : public QQuickFramebufferObject::Renderer {
  public:
    GlRenderer(std::shared_ptr<mpv_handle> mpv, MpvPicture::Changed changed)
        : picture_(MpvPicture::withOpenGl(std::move(mpv), glFunction, std::move(changed))) {}

  protected:
    void synchronize(QQuickFramebufferObject* item) override {
        radius_ = LivePicture::radius * item->window()->effectiveDevicePixelRatio();
    }
    void render() override {
        QOpenGLFramebufferObject& target = *framebufferObject();
        if (picture_) static_cast<void>(picture_->takeNews());
        if (!picture_ || !picture_->hasPicture()) {
            QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
            gl.glClearColor(0, 0, 0, 0);
            gl.glClear(GL_COLOR_BUFFER_BIT);
            return;
        }
        picture_->draw(static_cast<int>(target.handle()), target.size());
        QQuickOpenGLUtils::resetOpenGLState();
        target.bind();
        QOpenGLPaintDevice device(target.size());
        mask_.cut(device, target.size(), radius_);
        QQuickOpenGLUtils::resetOpenGLState();
    }

  private:
    RoundMask mask_;
    double radius_ = 0;
    std::unique_ptr<MpvPicture> picture_;
};

class GlPainter : public QQuickFramebufferObject {
  public:
    explicit GlPainter(std::shared_ptr<mpv_handle> mpv) : mpv_(std::move(mpv)) {}

    [[nodiscard]] Renderer* createRenderer() const override {
        // The scene graph only asks while this thread waits.
        auto* const self = const_cast<GlPainter*>(this);
        return new GlRenderer(mpv_, later<QQuickItem>(self, &QQuickItem::update));
    }

  private:
    std::shared_ptr<mpv_handle> mpv_;
};

}  // namespace

LivePicture::LivePicture(std::shared_ptr<mpv_handle> mpv) : mpv_(std::move(mpv)) {}

void LivePicture::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change != ItemSceneChange) return;
    painter_.reset();
    if (!value.window) return;
    // What a window is drawn with is settled when it is first shown.
    if (value.window->isSceneGraphInitialized()) return begin();
    connect(value.window, &QQuickWindow::sceneGraphInitialized, this, &LivePicture::begin,
            Qt::QueuedConnection);
}

void LivePicture::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (painter_) painter_->setSize(now.size());
}

void LivePicture::begin() {
    if (painter_ || !mpv_ || !window()) return;
    if (window()->rendererInterface()->graphicsApi() == QSGRendererInterface::OpenGL)
        painter_ = std::make_unique<GlPainter>(mpv_);
    else
        painter_ = std::make_unique<MemoryPainter>(mpv_);
    painter_->setParentItem(this);
    painter_->setSize(size());
}

}  // namespace velmora
