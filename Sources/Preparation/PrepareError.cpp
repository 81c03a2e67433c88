#include "Preparation/Media.h"

#include <QLocale>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

constexpr qint64 gigabyte = 1'000'000'000;

/// Decimal units as file managers use them: whole numbers, from gigabytes on with one decimal if it says
/// something.
QString formattedSize(qint64 bytes) {
    const qint64 size = std::clamp<qint64>(bytes, 0, 9'000'000'000 * gigabyte);
    qint64 unit = 1;
    while (size / unit >= 1000) unit *= 1000;
    const qint64 step = unit >= gigabyte ? unit / 10 : unit;
    const qint64 rounded = (size + step / 2) / step * step;
    return QLocale().formattedDataSize(rounded, rounded % unit == 0 ? 0 : 1, QLocale::DataSizeSIFormat);
}

}  // namespace

PrepareError PrepareError::system(const std::error_code& code) {
    return {.which = Case::system, .detail = QString::fromLocal8Bit(code.message().c_str())};
}

QString PrepareError::errorDescription() const {
    switch (which) {
        case Case::probeFailed:
            return detail.isEmpty() ? u"That doesn't look like a video file."_s
                                    : u"Couldn't read the file: "_s + detail;
        case Case::notEnoughSpace:
            return u"Not enough free disk space to prepare this movie. Needs about "_s +
                   formattedSize(needed) + u", "_s + formattedSize(free) + u" free."_s;
        case Case::ffmpegFailed:
            return detail.isEmpty() ? u"ffmpeg couldn't convert the file."_s
                                    : u"ffmpeg couldn't convert the file:\n"_s + detail;
        case Case::toolsMissing:
            return u"The bundled ffmpeg is missing. Rebuild the app, or install ffmpeg with Homebrew:  "
                   "brew install ffmpeg"_s;
        case Case::unreadable:
            return u"That file can't be read."_s;
        case Case::noVideo:
            return u"No video stream found in that file."_s;
        case Case::busy:
            return u"Another Velmora is already preparing this movie. Try again when it has finished."_s;
        case Case::cancelled:
            return u"Preparation was cancelled."_s;
        case Case::system:
            break;
    }
    return detail;
}

}  // namespace velmora
