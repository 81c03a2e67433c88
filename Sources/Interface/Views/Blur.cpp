#include "Interface/Views/Blur.h"

#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>
#include <span>
#include <vector>

namespace velmora::Blur {

namespace {

constexpr int passes = 3;  // three boxes are as good as a bell
constexpr int backdropWidth = 160;
constexpr int backdropRadius = 6;
constexpr double saturation = 1.15;
constexpr double brightness = 0.85;

// Bytes of one channel along a row or a column.
struct Lane {
    uchar* first;
    qsizetype stride;
    int length;
    [[nodiscard]] uchar& operator[](int index) const { return first[index * stride]; }
};

void boxBlur(const Lane& lane, int radius, std::span<uchar> copy) {
    for (int i = 0; i < lane.length; ++i) copy[static_cast<size_t>(i)] = lane[i];
    const auto at = [&](int index) {
        return static_cast<int>(copy[static_cast<size_t>(std::clamp(index, 0, lane.length - 1))]);
    };
    int sum = 0;
    for (int i = -radius; i <= radius; ++i) sum += at(i);
    const int size = 2 * radius + 1;
    for (int i = 0; i < lane.length; ++i) {
        lane[i] = static_cast<uchar>((sum + size / 2) / size);
        sum += at(i + radius + 1) - at(i - radius);
    }
}

// Every byte of a pixel is a channel of its own.
void blur(QImage& image, int radius) {
    const int channels = image.depth() / 8;
    const qsizetype rowStride = image.bytesPerLine();
    std::vector<uchar> copy(static_cast<size_t>(std::max(image.width(), image.height())));
    uchar* const bits = image.bits();
    for (int pass = 0; pass < passes; ++pass)
        for (int channel = 0; channel < channels; ++channel) {
            for (int y = 0; y < image.height(); ++y)
                boxBlur({bits + y * rowStride + channel, channels, image.width()}, radius, copy);
            for (int x = 0; x < image.width(); ++x)
                boxBlur({bits + qsizetype{x} * channels + channel, rowStride, image.height()}, radius, copy);
        }
}

QRgb toned(QRgb pixel, int noise) {
    const double grey = 0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
    const auto channel = [&](int value) {
        const double saturated = grey + (value - grey) * saturation;
        return std::clamp(static_cast<int>(saturated * brightness + 0.5) + noise, 0, 255);
    };
    return qRgb(channel(qRed(pixel)), channel(qGreen(pixel)), channel(qBlue(pixel)));
}

}  // namespace

QImage backdrop(const QImage& poster) {
    if (poster.isNull()) return {};
    QImage image =
        poster.scaledToWidth(backdropWidth, Qt::SmoothTransformation).convertToFormat(QImage::Format_RGB32);
    blur(image, backdropRadius);
    // Steps of one brightness would show as bands on a large dark surface. The same poster looks the same.
    QRandomGenerator noise(1);
    for (int y = 0; y < image.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) line[x] = toned(line[x], noise.bounded(-1, 2));
    }
    return image;
}

QImage shadow(int width, int cornerRadius) {
    const int size = 2 * shadowBorder(width, cornerRadius) + 1;
    QImage image(size, size, QImage::Format_Alpha8);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(image.rect().adjusted(width, width, -width, -width), cornerRadius, cornerRadius);
    painter.end();
    // The boxes together reach as far as the shadow is wide.
    blur(image, std::max(1, width / passes));
    return image;
}

}  // namespace velmora::Blur
