#include "Interface/Views/Pictures.h"

#include "Interface/Views/Blur.h"

#include <QCache>
#include <QCoreApplication>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr int keptSymbols = 256;

QImage drawnSymbol(const QString& name, QSize pixels, QColor color) {
    QImageReader reader(u":/icons/velmora/scalable/%1.svg"_s.arg(name));
    reader.setScaledSize(pixels);
    QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return image;
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

QImage symbolImage(const QString& name, QSize pixels, QColor color) {
    static QCache<QString, QImage> cache(keptSymbols);
    const QString key =
        u"%1 %2 %3 %4"_s.arg(name, color.name(QColor::HexArgb)).arg(pixels.width()).arg(pixels.height());
    if (const QImage* const kept = cache.object(key)) return *kept;
    const QImage image = drawnSymbol(name, pixels, color);
    cache.insert(key, new QImage(image));
    return image;
}

// The part of `image` that fills `size` without distortion.
QRectF covering(const QImage& image, QSizeF size) {
    const QSizeF part = size.scaled(image.size(), Qt::KeepAspectRatio);
    return {QPointF((image.width() - part.width()) / 2, (image.height() - part.height()) / 2), part};
}

// A part of `image`; its pixels are the image's own where that is possible, which must outlive it.
QImage view(const QImage& image, QRect part) {
    if (part == image.rect()) return image;
    if (image.depth() < 8 || image.colorCount() > 0) return image.copy(part);
    return {image.constScanLine(part.y()) + static_cast<qsizetype>(part.x()) * (image.depth() / 8),
            part.width(), part.height(), image.bytesPerLine(), image.format()};
}

QPainterPath roundedPath(const QRectF& rect, double radius, bool roundsBottom) {
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    if (!roundsBottom) {
        QPainterPath lower;
        lower.addRect(rect.adjusted(0, radius, 0, 0));
        path = path.united(lower);
    }
    return path;
}

template <class Value>
[[nodiscard]] bool changes(Value& field, const Value& value) {
    return std::exchange(field, value) != value;
}

}  // namespace

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void Symbol::setName(const QString& name) {
    if (!changes(name_, name)) return;
    update();
    Q_EMIT nameChanged();
}

void Symbol::setColor(const QColor& color) {
    if (!changes(color_, color)) return;
    update();
    Q_EMIT colorChanged();
}

void Symbol::paint(QPainter* painter) {
    if (name_.isEmpty()) return;
    const QSize pixels = painter->transform().mapRect(boundingRect()).size().toSize();
    if (!pixels.isEmpty()) painter->drawImage(boundingRect(), symbolImage(name_, pixels, color_));
}

RoundedPicture::RoundedPicture(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void RoundedPicture::setImage(const QImage& image) {
    if (image.cacheKey() == image_.cacheKey()) return;
    image_ = image;
    update();
    Q_EMIT imageChanged();
}

double RoundedPicture::ratio() const {
    return image_.height() > 0 ? static_cast<double>(image_.width()) / image_.height() : 0;
}

void RoundedPicture::setRadius(double radius) {
    if (!changes(radius_, radius)) return;
    update();
    Q_EMIT shapeChanged();
}

void RoundedPicture::setRoundsBottom(bool on) {
    if (!changes(roundsBottom_, on)) return;
    update();
    Q_EMIT shapeChanged();
}

void RoundedPicture::setEdge(const QColor& edge) {
    if (!changes(edge_, edge)) return;
    update();
    Q_EMIT shapeChanged();
}

void RoundedPicture::paint(QPainter* painter) {
    const QRectF box = boundingRect();
    const QSize pixels = painter->transform().mapRect(box).size().toSize();
    if (image_.isNull() || pixels.isEmpty()) return;
    // One careful scaling to the exact size: the painter's own is coarse when it makes smaller by much.
    const QRect part = covering(image_, box.size()).toRect() & image_.rect();
    const QImage exact = view(image_, part).scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBrush brush(exact);
    brush.setTransform(QTransform::fromScale(box.width() / pixels.width(), box.height() / pixels.height()));
    painter->setPen(Qt::NoPen);
    painter->setBrush(brush);
    painter->drawPath(roundedPath(box, radius_, roundsBottom_));
    if (edge_.alpha() == 0) return;
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(edge_, 1));
    painter->drawPath(roundedPath(box.adjusted(0.5, 0.5, -0.5, -0.5), radius_ - 0.5, roundsBottom_));
}

BlurredPicture::BlurredPicture(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void BlurredPicture::setImage(const QImage& image) {
    if (image.cacheKey() == image_.cacheKey()) return;
    image_ = image;
    const int generation = ++generation_;
    Q_EMIT imageChanged();
    showBlurred({});
    if (image.isNull()) return;
    // It may be gone when the picture is done, so that the answer goes by way of the application.
    QThreadPool::globalInstance()->start([self = QPointer(this), generation, image] {
        const QImage blurred = Blur::backdrop(image);
        const auto show = [self, generation, blurred] {
            if (self && generation == self->generation_) self->showBlurred(blurred);
        };
        if (auto* const application = QCoreApplication::instance())
            QMetaObject::invokeMethod(application, show, Qt::QueuedConnection);
    });
}

void BlurredPicture::showBlurred(const QImage& blurred) {
    const bool wasReady = ready();
    blurred_ = blurred;
    update();
    if (ready() != wasReady) Q_EMIT readyChanged();
}

void BlurredPicture::paint(QPainter* painter) {
    if (blurred_.isNull()) return;
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(boundingRect(), blurred_, covering(blurred_, size()));
}

Shadow::Shadow(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void Shadow::setSpread(double spread) {
    if (!changes(spread_, spread)) return;
    update();
    Q_EMIT shapeChanged();
}

void Shadow::setDrop(double drop) {
    if (!changes(drop_, drop)) return;
    update();
    Q_EMIT shapeChanged();
}

void Shadow::setRadius(double radius) {
    if (!changes(radius_, radius)) return;
    update();
    Q_EMIT shapeChanged();
}

void Shadow::paint(QPainter* painter) {
    const int width = static_cast<int>(std::lround(spread_));
    const int corner = static_cast<int>(std::lround(radius_));
    const QImage tile = Blur::shadow(width, corner);
    const double slice = std::min(
        {static_cast<double>(Blur::shadowBorder(width, corner)), this->width() / 2, this->height() / 2});
    const double tileEnd = tile.width() - slice;
    const std::array<double, 4> from{0, slice, tileEnd, static_cast<double>(tile.width())};
    const std::array<double, 4> across{0, slice, this->width() - slice, this->width()};
    const std::array<double, 4> down{0, slice, this->height() - slice, this->height()};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column) {
            const QRectF source(QPointF(from[column], from[row]), QPointF(from[column + 1], from[row + 1]));
            const QRectF target(QPointF(across[column], down[row]),
                                QPointF(across[column + 1], down[row + 1]));
            painter->drawImage(target, tile, source);
        }
    // What is translucent above it must not show it.
    const QRectF box = boundingRect().adjusted(spread_, spread_ - drop_, -spread_, -spread_ - drop_);
    painter->setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter->setPen(Qt::NoPen);
    painter->setBrush(Qt::black);
    painter->drawRoundedRect(box, radius_, radius_);
}

}  // namespace velmora
