#include "Companions/SubtitleText.h"

#include "Companions/Names.h"

#include <QFile>
#include <QStringDecoder>

#include <unicode/ucnv.h>

#include <algorithm>
#include <memory>

namespace velmora {
namespace {

constexpr qint64 pieceSize = 1 << 18;
constexpr qint64 mostRead = 1 << 26;

/// A character is rarely more than a few code units; text beyond this is not collected.
constexpr qsizetype mostCodeUnits = 4 * SubtitleText::longest;

bool hasUtf16Mark(QByteArrayView bytes) {
    return bytes.startsWith(QByteArrayView("\xFF\xFE", 2)) || bytes.startsWith(QByteArrayView("\xFE\xFF", 2));
}

/// Decodes bytes that arrive in pieces, of which the first has at least two, keeping what both readings of
/// them need.
class Decoder {
  public:
    void add(QByteArrayView piece) {
        if (head_.isEmpty() && hasUtf16Mark(piece)) unicode_ = QStringDecoder(QStringDecoder::Utf16);
        if (head_.size() < SubtitleText::longest) {
            head_.append(piece.first(std::min(piece.size(), SubtitleText::longest - head_.size())));
        }
        const QString decoded = unicode_(piece);
        if (text_.size() < mostCodeUnits) text_.append(decoded);
    }

    [[nodiscard]] bool isUnicode() const { return hasUtf16Mark(head_) || !unicode_.hasError(); }

    /// `isWhole`: the last piece was the end of the file.
    [[nodiscard]] SubtitleText finish(bool isWhole) {
        // A character that the end cut short shows as an error only when something follows it.
        if (isWhole) [[maybe_unused]]
            const QString end = unicode_(QByteArrayView("\n", 1));
        const QString text = isUnicode() ? text_ : codePage1252();
        return {isUnicode(), Names::first(text, SubtitleText::longest)};
    }

  private:
    [[nodiscard]] QString codePage1252() const {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open("windows-1252", &status),
                                                                           &ucnv_close);
        QString text(head_.size(), Qt::Uninitialized);
        const int length = ucnv_toUChars(converter.get(), reinterpret_cast<UChar*>(text.data()),
                                         static_cast<int>(text.size()), head_.constData(),
                                         static_cast<int>(head_.size()), &status);
        return U_FAILURE(status) ? QString() : text.left(length);
    }

    QStringDecoder unicode_{QStringDecoder::Utf8};
    QByteArray head_;
    QString text_;
};

}  // namespace

std::optional<SubtitleText> SubtitleText::read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return {};
    Decoder decoder;
    qint64 total = 0;
    while (total < mostRead) {
        const QByteArray piece = file.read(pieceSize);
        if (piece.isEmpty()) break;
        total += piece.size();
        decoder.add(piece);
        if (!decoder.isUnicode() && total >= longest) return decoder.finish(false);
    }
    if (file.error() != QFileDevice::NoError) return {};
    return decoder.finish(total < mostRead);
}

SubtitleText SubtitleText::decode(QByteArrayView bytes) {
    Decoder decoder;
    decoder.add(bytes);
    return decoder.finish(true);
}

}  // namespace velmora
