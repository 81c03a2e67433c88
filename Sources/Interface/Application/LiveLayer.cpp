#include "Interface/Application/LiveLayer.h"

#include <utility>

namespace velmora {

void LiveLayer::componentComplete() {
    QQuickItem::componentComplete();
    connect(&controller_->session(), &Session::playerChanged, this, &LiveLayer::follow);
    follow();
}

void LiveLayer::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change == ItemVisibleHasChanged || change == ItemParentHasChanged) follow();
}

void LiveLayer::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (picture_) picture_->setSize(now.size());
}

void LiveLayer::follow() {
    const bool isSeen = isComponentComplete() && parentItem() && isVisible();
    const Player* const player = isSeen ? controller_->session().player().get() : nullptr;
    if (std::exchange(shown_, player) == player) return;
    // First: there is to be one at a time for a player.
    picture_.reset();
    if (player) picture_ = controller_->makeLivePicture();
    if (picture_) {
        connect(picture_.get(), &QQuickItem::implicitWidthChanged, this, &LiveLayer::measure);
        connect(picture_.get(), &QQuickItem::implicitHeightChanged, this, &LiveLayer::measure);
        picture_->setParentItem(this);
        picture_->setSize(size());
    }
    measure();
}

void LiveLayer::measure() {
    const bool isThere = picture_ != nullptr;
    setImplicitSize(isThere ? picture_->implicitWidth() : 0, isThere ? picture_->implicitHeight() : 0);
}

}  // namespace velmora
