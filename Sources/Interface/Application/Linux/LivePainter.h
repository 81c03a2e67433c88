#pragma once

#include <QGuiApplication>
#include <QImage>
#include <QMetaObject>
#include <QPaintDevice>
#include <QPointer>
#include <QQuickItem>

#include <functional>
#include <memory>

struct mpv_handle;

/// The two ways in which a `LivePicture` is drawn. Each fills its item and cuts the corners round.
namespace velmora::LivePainter {

/// Called on any thread.
struct News {
    std::function<void()> begins;   ///< the first picture is about to be seen
    std::function<void()> refuses;  ///< this is not the way to draw here
};

/// Only where the window is drawn with OpenGL. Refuses where there is no graphics processor, unless `always`.
[[nodiscard]] std::unique_ptr<QQuickItem> withOpenGl(std::shared_ptr<mpv_handle> mpv, News news, bool always);
/// Works in every window.
[[nodiscard]] std::unique_ptr<QQuickItem> inMemory(std::shared_ptr<mpv_handle> mpv, News news);

/// Rounds the corners of a picture that covers the device, smoothly; all in pixels.
class Corners {
  public:
    void cut(QPaintDevice& picture, QSize size, double radius);

  private:
    QImage mask_;  ///< of one disc, opaque where the picture stays
    double radius_ = 0;
};

/// Calls the item's method on the main thread, if it is still there by then. To be made on the main thread or
/// while that waits; may be called on any.
template <class Item>
[[nodiscard]] std::function<void()> later(Item* item, void (Item::*method)()) {
    return [item = QPointer<Item>(item), method] {
        const auto call = [item, method] {
            if (item) (item->*method)();
        };
        QMetaObject::invokeMethod(qGuiApp, call, Qt::QueuedConnection);
    };
}

}  // namespace velmora::LivePainter
