// What the player shows, drawn by mpv into memory, on a thread of its own: making a large picture smaller
// takes longer than the interface may stand still.
#include "Interface/Application/Linux/LivePainter.h"
#include "Interface/Application/Linux/LivePicture.h"
#include "Platform/Linux/MpvCore.h"
#include "Platform/Linux/MpvPicture.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace velmora::LivePainter {

namespace {

/// Draws while somebody looks. Any thread.
class Studio {
  public:
    struct Order {
        QSize pixels;  ///< empty: nobody looks
        double radius = 0;
        friend bool operator==(const Order&, const Order&) = default;
    };

    /// `drawn` is called when there is something to take.
    Studio(std::shared_ptr<mpv_handle> mpv, News news, std::function<void()> drawn)
        : news_(std::move(news)),
          drawn_(std::move(drawn)),
          thread_([this, mpv = std::move(mpv)](const std::stop_token& stop) mutable {
              work(std::move(mpv), stop);
          }) {}

    void order(const Order& order) {
        const std::lock_guard lock(mutex_);
        if (std::exchange(order_, order) != order) wake();
    }

    /// It falls silent at once, and ends when it is destroyed, for which mpv is waited for.
    void finish() {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
        thread_.request_stop();
    }

    /// The newest picture; null when it has been taken.
    [[nodiscard]] QImage take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(image_, QImage());
    }

  private:
    void wake() {
        isAwake_ = true;
        waker_.notify_one();
    }

    void work(std::shared_ptr<mpv_handle> mpv, const std::stop_token& stop) {
        const auto picture = MpvPicture::inMemory(std::move(mpv), [this] {
            const std::lock_guard lock(mutex_);
            wake();
        });
        if (!picture) return tell(news_.refuses);
        Order done;
        bool isNew = false;
        while (const auto order = nextOrder(stop)) {
            isNew = picture->takeNews() || isNew;
            if (order->pixels.isEmpty() || !picture->hasPicture() || (!isNew && *order == done)) continue;
            done = *order;
            isNew = false;
            deliver(draw(*picture, done));
        }
    }

    [[nodiscard]] std::optional<Order> nextOrder(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        waker_.wait(lock, stop, [this] { return isAwake_; });
        isAwake_ = false;
        return stop.stop_requested() ? std::nullopt : std::optional(order_);
    }

    [[nodiscard]] QImage draw(MpvPicture& picture, const Order& order) {
        QImage image(order.pixels, QImage::Format_ARGB32_Premultiplied);
        if (!picture.draw(image.bits(), order.pixels, static_cast<std::size_t>(image.bytesPerLine())))
            return {};
        // mpv leaves the fourth byte open.
        auto* const words = reinterpret_cast<quint32*>(image.bits());
        std::transform(words, words + image.sizeInBytes() / 4, words,
                       [](quint32 word) { return word | 0xFF000000U; });
        corners_.cut(image, order.pixels, order.radius);
        return image;
    }

    void deliver(const QImage& image) {
        if (image.isNull()) return;
        {
            const std::lock_guard lock(mutex_);
            image_ = image;
        }
        if (!std::exchange(hasBegun_, true)) tell(news_.begins);
        tell(drawn_);
    }

    void tell(const std::function<void()>& news) {
        const std::lock_guard lock(mutex_);
        if (!isOver_) news();
    }

    News news_;
    std::function<void()> drawn_;
    Corners corners_;
    bool hasBegun_ = false;

    std::mutex mutex_;
    std::condition_variable_any waker_;
    bool isAwake_ = false;
    bool isOver_ = false;
    Order order_;
    QImage image_;

    std::jthread thread_;  ///< last: it uses the others
};

class Item : public QQuickItem {
  public:
    Item(std::shared_ptr<mpv_handle> mpv, News news)
        : studio_(std::make_unique<Studio>(std::move(mpv), std::move(news),
                                           later<QQuickItem>(this, &QQuickItem::update))) {
        setFlag(ItemHasContents);
    }
    ~Item() override {
        studio_->finish();
        MpvCore::doAside([studio = std::move(studio_)] {});
    }

  protected:
    void geometryChange(const QRectF& now, const QRectF& before) override {
        QQuickItem::geometryChange(now, before);
        order();
    }

    void itemChange(ItemChange change, const ItemChangeData& value) override {
        QQuickItem::itemChange(change, value);
        if (change == ItemSceneChange) {
            if (watched_) watched_->removeEventFilter(this);
            watched_ = value.window;
            if (watched_) watched_->installEventFilter(this);
        }
        order();
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Expose) order();
        return QQuickItem::eventFilter(object, event);
    }

    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/) override {
        auto* node = static_cast<QSGImageNode*>(old);
        if (const QImage image = studio_->take(); !image.isNull()) image_ = image;
        if (image_.isNull()) return node;
        if (!node || shown_ != image_.cacheKey()) {
            if (!node) {
                node = window()->createImageNode();
                node->setOwnsTexture(true);
                node->setFiltering(QSGTexture::Linear);
            }
            node->setTexture(window()->createTextureFromImage(image_));
            shown_ = image_.cacheKey();
        }
        node->setRect(boundingRect());
        return node;
    }

  private:
    void order() {
        if (!watched_ || !watched_->isExposed() || !isVisible()) return studio_->order({});
        const double scale = watched_->effectiveDevicePixelRatio();
        studio_->order({.pixels = (size() * scale).toSize(), .radius = LivePicture::radius * scale});
    }

    QPointer<QQuickWindow> watched_;
    QImage image_;
    qint64 shown_ = 0;  ///< the key of the image that the node has
    std::unique_ptr<Studio> studio_;
};

}  // namespace

std::unique_ptr<QQuickItem> inMemory(std::shared_ptr<mpv_handle> mpv, News news) {
    return std::make_unique<Item>(std::move(mpv), std::move(news));
}

}  // namespace velmora::LivePainter
