#include "Terminal/TerminalText.h"

#include <QChar>
#include <QList>

#include <unicode/uchar.h>

namespace velmora::TerminalText {

namespace {

int columnsOf(char32_t character) {
    const auto point = static_cast<UChar32>(character);
    switch (u_charType(point)) {
        case U_NON_SPACING_MARK:
        case U_ENCLOSING_MARK:
        case U_FORMAT_CHAR:
            return 0;
        default:
            break;
    }
    const int width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// Controls steer the terminal, and the direction marks make it show another text than there is.
bool isObeyed(char32_t character) {
    return QChar::category(character) == QChar::Other_Control ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

}  // namespace

QString printable(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        const bool isReplaced = character != u'\n' && isObeyed(character);
        result += QChar::fromUcs4(isReplaced ? char32_t{QChar::ReplacementCharacter} : character);
    }
    return result;
}

int columns(const QString& text) {
    int total = 0;
    for (const char32_t character : text.toUcs4()) total += columnsOf(character);
    return total;
}

QString fit(const QString& text, int width) {
    if (columns(text) <= width) return text;
    if (width <= 0) return {};
    QString result;
    int used = 1;  // the ellipsis
    for (const char32_t character : text.toUcs4()) {
        used += columnsOf(character);
        if (used > width) break;
        result += QChar::fromUcs4(character);
    }
    return result + QChar(u'…');
}

}  // namespace velmora::TerminalText
