#include "Interface/Application/LiveLayer.h"

namespace velmora {

void LiveLayer::componentComplete() {
    QQuickItem::componentComplete();
    connect(&controller_->session(), &Session::playerChanged, this, &LiveLayer::follow);
    follow();
}

void LiveLayer::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (picture_) picture_->setSize(now.size());
}

void LiveLayer::follow() {
    picture_.reset();
    picture_ = controller_->makeLivePicture();
    if (!picture_) return;
    picture_->setParentItem(this);
    picture_->setSize(size());
}

}  // namespace velmora
