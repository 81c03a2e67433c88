#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <expected>
#include <optional>

/// The type-length-value format of HAP pairing: one byte of type, one of length, the value; a value longer
/// than 255 bytes continues in the next item of the same type.
namespace velmora::Tlv8 {

enum class Tag : quint8 {
    method = 0x00,
    identifier = 0x01,
    salt = 0x02,
    publicKey = 0x03,
    proof = 0x04,
    encryptedData = 0x05,
    state = 0x06,
    error = 0x07,
    retryDelay = 0x08,
    signature = 0x0A,
    name = 0x11,
    flags = 0x13,
    separator = 0xFF,
};

struct Item {
    Tag tag;
    QByteArray value;
    bool operator==(const Item&) const = default;
};

/// Larger messages are refused; the largest real ones carry an accessory's certificate of some kilobytes.
constexpr qsizetype maximumSize = qsizetype{16} * 1024;

enum class ParseError {
    tooLarge,
    truncated,    ///< an item's value, or its length, lies beyond the end
    unseparated,  ///< two values of one type side by side, and the first could not go on into the second
    separator,    ///< a separator with a value
};

/// The items of a message with the fragments joined, unknown types included; separators stay as items.
[[nodiscard]] std::expected<QList<Item>, ParseError> parse(QByteArrayView message);

/// The value of the only item of this type; nothing if there is none, or more than one.
[[nodiscard]] std::optional<QByteArray> find(const QList<Item>& items, Tag tag);

[[nodiscard]] QByteArray encode(const QList<Item>& items);

}  // namespace velmora::Tlv8
