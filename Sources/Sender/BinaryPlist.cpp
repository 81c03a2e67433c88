#include "Sender/BinaryPlist.h"

#include <QString>

#include <bit>

namespace velmora {

namespace {

constexpr int deepestNesting = 64;
constexpr int mostValues = 20'000;
constexpr qsizetype headerBytes = 8;
constexpr qsizetype trailerBytes = 32;

// The upper half of the byte that each value begins with.
enum Kind { simpleKind, integerKind, realKind, dateKind, dataKind, asciiKind, utf16Kind, uidKind = 8 };
constexpr int arrayKind = 0xa;
constexpr int dictionaryKind = 0xd;

}  // namespace

std::optional<QVariant> BinaryPlist::decode() {
    if (bytes_.size() < headerBytes + trailerBytes) return std::nullopt;
    const qsizetype trailer = bytes_.size() - trailerBytes;
    offsetWidth_ = static_cast<quint8>(bytes_[trailer + 6]);
    referenceWidth_ = static_cast<quint8>(bytes_[trailer + 7]);
    objects_ = number(trailer + 8, 8).value_or(0);
    const quint64 root = number(trailer + 16, 8).value_or(0);
    table_ = number(trailer + 24, 8).value_or(0);
    if (offsetWidth_ < 1 || offsetWidth_ > 8 || referenceWidth_ < 1 || referenceWidth_ > 8)
        return std::nullopt;
    if (table_ > quint64(trailer) || objects_ > (quint64(trailer) - table_) / quint64(offsetWidth_))
        return std::nullopt;
    return value(root, 0);
}

std::optional<QByteArrayView> BinaryPlist::bytes(qsizetype at, qsizetype count) const {
    if (at < 0 || count < 0 || count > bytes_.size() || at > bytes_.size() - count) return std::nullopt;
    return bytes_.sliced(at, count);
}

std::optional<quint64> BinaryPlist::number(qsizetype at, qsizetype width) const {
    const auto digits = bytes(at, width);
    if (!digits) return std::nullopt;
    quint64 result = 0;
    for (const char digit : *digits) result = result << 8 | static_cast<quint8>(digit);
    return result;
}

std::optional<BinaryPlist::Object> BinaryPlist::objectAt(quint64 index) const {
    if (index >= objects_) return std::nullopt;
    const auto offset = number(qsizetype(table_) + qsizetype(index) * offsetWidth_, offsetWidth_);
    if (!offset || *offset < quint64(headerBytes) || *offset >= table_) return std::nullopt;
    const auto marker = number(qsizetype(*offset), 1).value_or(0);
    const Object object{int(marker >> 4), qsizetype(marker & 0x0f), qsizetype(*offset) + 1};
    const bool hasLongCount = object.count == 0x0f && (object.kind >= dataKind && object.kind != uidKind);
    if (!hasLongCount) return object;
    // The real count follows as an integer value of its own.
    const auto countMarker = number(object.at, 1);
    if (!countMarker || *countMarker >> 4 != integerKind || (*countMarker & 0x0f) > 3) return std::nullopt;
    const qsizetype width = qsizetype(1) << (*countMarker & 0x0f);
    const auto count = number(object.at + 1, width);
    if (!count || *count > quint64(bytes_.size())) return std::nullopt;
    return Object{object.kind, qsizetype(*count), object.at + 1 + width};
}

std::optional<QVariant> BinaryPlist::value(quint64 index, int depth) {
    const auto object = objectAt(index);
    if (!object || depth > deepestNesting || ++values_ > mostValues) return std::nullopt;
    switch (object->kind) {
        case simpleKind:
            return simple(*object);
        case integerKind:
            return integer(*object);
        case realKind:
            return real(*object);
        case asciiKind:
        case utf16Kind:
            return text(*object);
        case arrayKind:
            return array(*object, depth);
        case dictionaryKind:
            return dictionary(*object, depth);
        case dataKind: {
            const auto data = bytes(object->at, object->count);
            return data ? std::optional<QVariant>(data->toByteArray()) : std::nullopt;
        }
        default:
            return QVariant();
    }
}

std::optional<QVariant> BinaryPlist::simple(const Object& object) const {
    constexpr qsizetype falseValue = 8;
    constexpr qsizetype trueValue = 9;
    if (object.count != falseValue && object.count != trueValue) return QVariant();
    return object.count == trueValue;
}

std::optional<QVariant> BinaryPlist::integer(const Object& object) const {
    if (object.count > 4) return std::nullopt;
    const qsizetype width = qsizetype(1) << object.count;
    // Sixteen bytes are written for unsigned 64-bit values; the upper half is empty.
    const auto result = width == 16 ? number(object.at + 8, 8) : number(object.at, width);
    if (!result || (width == 16 && number(object.at, 8) != 0)) return std::nullopt;
    return width == 16 ? QVariant(qulonglong(*result)) : QVariant(qlonglong(*result));
}

std::optional<QVariant> BinaryPlist::real(const Object& object) const {
    const auto bits = number(object.at, qsizetype(1) << object.count);
    if (!bits) return std::nullopt;
    if (object.count == 2) return double(std::bit_cast<float>(quint32(*bits)));
    if (object.count == 3) return std::bit_cast<double>(*bits);
    return std::nullopt;
}

std::optional<QVariant> BinaryPlist::text(const Object& object) const {
    const bool isWide = object.kind == utf16Kind;
    const auto characters = bytes(object.at, isWide ? object.count * 2 : object.count);
    if (!characters) return std::nullopt;
    if (!isWide) return QString::fromLatin1(*characters);
    QString result(object.count, Qt::Uninitialized);
    for (qsizetype i = 0; i < object.count; ++i)
        result[i] = QChar(quint16(number(object.at + 2 * i, 2).value_or(0)));
    return result;
}

std::optional<QVariant> BinaryPlist::child(const Object& object, qsizetype position, int depth) {
    const auto reference = number(object.at + position * referenceWidth_, referenceWidth_);
    return reference ? value(*reference, depth + 1) : std::nullopt;
}

std::optional<QVariant> BinaryPlist::array(const Object& object, int depth) {
    QVariantList list;
    for (qsizetype i = 0; i < object.count; ++i) {
        auto item = child(object, i, depth);
        if (!item) return std::nullopt;
        list.append(*std::move(item));
    }
    return list;
}

std::optional<QVariant> BinaryPlist::dictionary(const Object& object, int depth) {
    QVariantMap map;
    for (qsizetype i = 0; i < object.count; ++i) {
        const auto key = child(object, i, depth);
        auto item = child(object, object.count + i, depth);
        if (!key || key->typeId() != QMetaType::QString || !item) return std::nullopt;
        map.insert(key->toString(), *std::move(item));
    }
    return map;
}

}  // namespace velmora
