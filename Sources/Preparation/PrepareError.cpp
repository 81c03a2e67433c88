#include "Preparation/Media.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(PrepareError)
};

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
            return detail.isEmpty() ? Texts::tr("That doesn't look like a video file.")
                                    : Texts::tr("Couldn't read the file: %1").arg(detail);
        case Case::notEnoughSpace:
            return Texts::tr("Not enough free disk space to prepare this movie. Needs about %1, %2 free.")
                .arg(formattedSize(needed), formattedSize(free));
        case Case::ffmpegFailed:
            return detail.isEmpty() ? Texts::tr("ffmpeg couldn't convert the file.")
                                    : Texts::tr("ffmpeg couldn't convert the file:\n%1").arg(detail);
        case Case::toolsMissing:
            return Texts::tr(
                "The bundled ffmpeg is missing. Rebuild the app, or install ffmpeg with Homebrew:  brew "
                "install ffmpeg");
        case Case::unreadable:
            return Texts::tr("That file can't be read.");
        case Case::noVideo:
            return Texts::tr("No video stream found in that file.");
        case Case::busy:
            return Texts::tr(
                "Another Velmora is already preparing this movie. Try again when it has finished.");
        case Case::cancelled:
            return Texts::tr("Preparation was cancelled.");
        case Case::system:
            break;
    }
    return detail;
}

}  // namespace velmora
