#include "Sender/Discovery/TxtRecord.h"

#include <QHash>
#include <QLatin1StringView>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype entryLimit = 64;
constexpr qsizetype entryLengthLimit = 255;
constexpr qsizetype shownLengthLimit = 64;

using Values = QHash<QByteArray, QByteArray>;

Values split(const QList<QByteArray>& entries) {
    Values values;
    for (const QByteArray& entry : entries.first(std::min(entries.size(), entryLimit))) {
        const qsizetype equals = entry.indexOf('=');
        if (equals < 1 || entry.size() > entryLengthLimit) continue;
        const QByteArray key = entry.first(equals).toLower();
        if (!values.contains(key)) values.insert(key, entry.sliced(equals + 1));
    }
    return values;
}

/// `0x` and one to `digits` hexadecimal digits, nothing else: Qt alone would also take signs and blanks.
std::optional<quint64> hexadecimal(QByteArrayView text, qsizetype digits) {
    if (!text.startsWith("0x") && !text.startsWith("0X")) return std::nullopt;
    text = text.sliced(2);
    const bool plain = std::ranges::all_of(
        text, [](char c) { return QChar::isDigit(static_cast<uchar>(c)) || (c | 0x20) >= 'a'; });
    bool valid = false;
    const quint64 value = text.toULongLong(&valid, 16);
    if (!plain || !valid || text.size() > digits) return std::nullopt;
    return value;
}

/// Two halves of 32 bits, the low one first. Each is a number of its own: their digits must not be glued
/// together, because a half with leading zeros is written shorter.
std::optional<quint64> featuresFrom(const QByteArray& text) {
    const QList<QByteArray> halves = text.split(',');
    if (halves.size() == 1) return hexadecimal(halves.first(), 16);
    if (halves.size() != 2) return std::nullopt;
    const auto low = hexadecimal(halves.first(), 8);
    const auto high = hexadecimal(halves.last(), 8);
    if (!low || !high) return std::nullopt;
    return *low | *high << 32;
}

/// The same bits in base64, lowest byte first, possibly more than 64 of them.
std::optional<quint64> extendedFeaturesFrom(const QByteArray& text) {
    const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || (*decoded).isEmpty()) return std::nullopt;
    const QByteArray bytes = (*decoded).first(std::min<qsizetype>((*decoded).size(), 8));
    quint64 value = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) value |= quint64{static_cast<uchar>(bytes[i])} << (8 * i);
    return value;
}

QString deviceIdFrom(const QByteArray& text) {
    QByteArray digits = text.toUpper();
    digits.replace(':', "").replace('-', "");
    const QByteArray bytes = QByteArray::fromHex(digits);
    const bool zero = std::ranges::all_of(bytes, [](char c) { return c == 0; });
    if ((bytes.size() != 6 && bytes.size() != 8) || digits.size() != 2 * bytes.size() || zero) return {};
    return QString::fromLatin1(bytes.toHex(':').toUpper());
}

QString versionFrom(const QByteArray& text) {
    const bool plain = std::ranges::all_of(text, [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    const bool sane = plain && text.size() <= 32 && !text.isEmpty() && text.front() != '.';
    return sane ? QString::fromLatin1(text) : QString();
}

QByteArray keyFrom(const QByteArray& text) {
    const QByteArray bytes = QByteArray::fromHex(text);
    return bytes.size() == 32 && bytes.toHex() == text.toLower() ? bytes : QByteArray();
}

QString uuidFrom(const QByteArray& text) {
    const QUuid uuid = QUuid::fromString(QLatin1StringView(text));
    return uuid.isNull() ? QString() : uuid.toString(QUuid::WithoutBraces);
}

int digitFrom(const QByteArray& text) {
    return text.size() == 1 && text.front() >= '0' && text.front() <= '9' ? text.front() - '0' : 0;
}

/// U+200D joins the parts of one emoji; all else of the format class hides or reorders text.
bool isShown(char32_t c) {
    switch (QChar::category(c)) {
        case QChar::Other_Control:
        case QChar::Other_Surrogate:
        case QChar::Other_NotAssigned:
        case QChar::Other_PrivateUse:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return QChar::isSpace(c);
        case QChar::Other_Format:
            return c == 0x200D;
        default:
            return true;
    }
}

}  // namespace

TxtRecord TxtRecord::parse(const QList<QByteArray>& entries) {
    const Values values = split(entries);
    TxtRecord record;
    record.deviceId = deviceIdFrom(values.value("deviceid"));
    record.features = featuresFrom(values.value("features"));
    if (!record.features) record.features = extendedFeaturesFrom(values.value("fex"));
    record.status = hexadecimal(values.value("flags", values.value("sf")), 16).value_or(0);
    record.model = shownText(QString::fromUtf8(values.value("model")));
    record.sourceVersion = versionFrom(values.value("srcvers"));
    record.systemVersion = versionFrom(values.value("osvers", values.value("ov")));
    record.publicKey = keyFrom(values.value("pk"));
    record.pairingIdentifier = uuidFrom(values.value("pi"));
    record.sessionIdentifier = uuidFrom(values.value("psi"));
    record.accessControl = digitFrom(values.value("acl"));
    record.accessType = digitFrom(values.value("act"));
    const QByteArray password = values.value("pw").toLower();
    record.password = password == "true" || password == "1" || (record.status & passwordSet) != 0;
    return record;
}

QString shownText(const QString& text) {
    QString shown;
    for (const char32_t c : text.left(4 * shownLengthLimit).toUcs4())
        if (isShown(c)) shown += QString::fromUcs4(&c, 1);
    shown = shown.simplified();
    if (shown.size() <= shownLengthLimit) return shown;
    // Half a character is none.
    shown.truncate(shown.at(shownLengthLimit - 1).isHighSurrogate() ? shownLengthLimit - 1
                                                                    : shownLengthLimit);
    return shown;
}

}  // namespace velmora
