#include "Interface/Application/Linux/LivePainter.h"

#include <QPainter>

#include <cmath>
#include <utility>

namespace velmora::LivePainter {

namespace {

QImage disc(double radius) {
    const int side = 2 * static_cast<int>(std::ceil(radius));
    QImage mask(side, side, QImage::Format_ARGB32_Premultiplied);
    mask.fill(Qt::transparent);
    QPainter painter(&mask);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(mask.rect(), radius, radius);
    return mask;
}

}  // namespace

/// A quarter of the disc in each corner, so that the picture itself is left alone.
void Corners::cut(QPaintDevice& picture, QSize size, double radius) {
    if (std::exchange(radius_, radius) != radius) mask_ = disc(radius);
    const int side = mask_.width() / 2;
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    for (const bool isRight : {false, true})
        for (const bool isLow : {false, true}) {
            const QPoint corner(isRight ? size.width() - side : 0, isLow ? size.height() - side : 0);
            painter.drawImage(corner, mask_, QRect(isRight ? side : 0, isLow ? side : 0, side, side));
        }
}

}  // namespace velmora::LivePainter
