#include "Interface/Views/Scenery.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace velmora::test::Scenery {

namespace {

struct Hills {
    QColor color;
    double top;     // of the height
    double swing;   // of the height
    double period;  // of the width
    double shift;
};

void drawHills(QPainter& painter, QSize size, const Hills& hills) {
    QPainterPath path;
    path.moveTo(0, size.height());
    for (int x = 0; x <= size.width(); x += 4) {
        const double turn = x / (hills.period * size.width()) + hills.shift;
        const double wave = std::sin(turn * 6.28) + 0.4 * std::sin(turn * 17);
        path.lineTo(x, size.height() * (hills.top + hills.swing * wave));
    }
    path.lineTo(size.width(), size.height());
    painter.fillPath(path, hills.color);
}

QImage landscape(QSize size, const QGradientStops& sky, QPointF sun, QColor sunColor,
                 const QList<Hills>& hills) {
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 0, size.height());
    gradient.setStops(sky);
    painter.fillRect(image.rect(), gradient);
    const QPointF place(sun.x() * size.width(), sun.y() * size.height());
    QRadialGradient glow(place, size.width() * 0.4);
    // Without an edge where it ends.
    constexpr double steps = 8;
    for (int step = 0; step <= steps; ++step) {
        QColor color = sunColor;
        color.setAlphaF(std::pow(1 - step / steps, 3));
        glow.setColorAt(step / steps, color);
    }
    painter.setOpacity(0.5);
    painter.fillRect(image.rect(), glow);
    painter.setOpacity(1);
    painter.setPen(Qt::NoPen);
    painter.setBrush(sunColor);
    painter.drawEllipse(place, size.height() * 0.06, size.height() * 0.06);
    for (const Hills& range : hills) drawHills(painter, size, range);
    return image;
}

}  // namespace

QImage dusk(QSize size) {
    return landscape(size, {{0, 0x1E2A55}, {0.4, 0x6B4A7C}, {0.55, 0xC97A66}, {0.75, 0xF0B57E}}, {0.66, 0.58},
                     0xFFF0CC,
                     {{0x9A6580, 0.58, 0.03, 0.5, 0.1},
                      {0x5F4470, 0.66, 0.03, 0.6, 0.4},
                      {0x2A244E, 0.84, 0.03, 0.9, 0},
                      {0x151932, 0.92, 0.06, 1.6, 0.1}});
}

QImage night(QSize size) {
    return landscape(
        size, {{0, 0x061226}, {0.6, 0x1F4A6E}, {1, 0x2F6286}}, {0.28, 0.26}, 0xEAF2FF,
        {{0x1C3656, 0.62, 0.05, 0.5, 0.2}, {0x12253D, 0.78, 0.03, 0.7, 0.6}, {0x091524, 0.9, 0.02, 0.5, 0}});
}

QImage snow(QSize size) {
    return landscape(size, {{0, 0xFFFFFF}, {1, 0xE8EEF5}}, {0.2, -0.5}, 0xFFFFFF,
                     {{0xE0E8F0, 0.52, 0.05, 0.6, 0.2}, {0xF4F7FB, 0.72, 0.03, 0.9, 0.3}});
}

}  // namespace velmora::test::Scenery
