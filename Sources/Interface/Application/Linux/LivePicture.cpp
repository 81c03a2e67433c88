#include "Interface/Application/Linux/LivePicture.h"

#include "Interface/Application/Linux/LivePainter.h"

#include <QQuickWindow>

#include <cmath>
#include <utility>

namespace velmora {

namespace {

constexpr double rounding = 1.5;  // what a box of the picture's ratio may differ by in whole pixels

}  // namespace

LivePicture::LivePicture(MpvPlayer& player, OpenGl openGl) : player_(&player), openGl_(openGl) {
    connect(&player, &MpvPlayer::started, this, &LivePicture::choosePainter);
    connect(&player, &MpvPlayer::ready, this, &LivePicture::measure);
}

void LivePicture::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change != ItemSceneChange) return;
    painter_.reset();
    if (!value.window) return;
    // What a window is drawn with is settled when it is first shown.
    choosePainter();
    connect(value.window, &QQuickWindow::sceneGraphInitialized, this, &LivePicture::choosePainter,
            Qt::QueuedConnection);
}

void LivePicture::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    fit();
}

void LivePicture::choosePainter() {
    if (painter_ || !player_ || !player_->handle() || !window() || !window()->isSceneGraphInitialized())
        return;
    if (window()->rendererInterface()->graphicsApi() != QSGRendererInterface::OpenGL) return useMemory();
    takePainter(LivePainter::withOpenGl(player_->handle(),
                                        {.begins = LivePainter::later(this, &LivePicture::takeFirstPicture),
                                         .refuses = LivePainter::later(this, &LivePicture::useMemory)},
                                        openGl_ == OpenGl::always));
}

void LivePicture::useMemory() {
    if (!player_ || !window()) return;
    takePainter(LivePainter::inMemory(
        player_->handle(),
        {.begins = LivePainter::later(this, &LivePicture::takeFirstPicture), .refuses = [] {}}));
}

void LivePicture::takePainter(std::unique_ptr<QQuickItem> painter) {
    painter_ = std::move(painter);
    painter_->setParentItem(this);
    fit();
}

void LivePicture::takeFirstPicture() {
    hasPicture_ = true;
    measure();
}

void LivePicture::measure() {
    if (!hasPicture_ || !player_ || !player_->isReady()) return;
    const QSize size = player_->pictureSize().value_or(QSize());
    if (!size.isEmpty()) setImplicitSize(size.width(), size.height());
    fit();
}

void LivePicture::fit() {
    if (!painter_) return;
    QSizeF fitted = size();
    const QSizeF exact = QSizeF(implicitWidth(), implicitHeight()).scaled(fitted, Qt::KeepAspectRatio);
    const double spare = std::max(fitted.width() - exact.width(), fitted.height() - exact.height());
    if (!exact.isEmpty() && spare > rounding) fitted = exact.toSize();
    painter_->setSize(fitted);
    painter_->setPosition(
        QPointF(std::round((width() - fitted.width()) / 2), std::round((height() - fitted.height()) / 2)));
}

}  // namespace velmora
