#include "Sender/Pairing/Tlv8.h"

#include <algorithm>

namespace velmora::Tlv8 {

namespace {

constexpr qsizetype fragmentSize = 255;

void appendFragment(QByteArray& message, Tag tag, QByteArrayView fragment) {
    message += static_cast<char>(tag);
    message += static_cast<char>(fragment.size());
    message += fragment;
}

}  // namespace

std::expected<QList<Item>, ParseError> parse(QByteArrayView message) {
    if (message.size() > maximumSize) return std::unexpected(ParseError::tooLarge);
    QList<Item> items;
    qsizetype previousLength = 0;
    while (!message.isEmpty()) {
        if (message.size() < 2) return std::unexpected(ParseError::truncated);
        const auto tag = static_cast<Tag>(message[0]);
        const auto length = static_cast<quint8>(message[1]);
        message = message.sliced(2);
        if (message.size() < length) return std::unexpected(ParseError::truncated);
        if (tag == Tag::separator && length > 0) return std::unexpected(ParseError::separator);
        const QByteArrayView value = message.first(length);
        const bool again = !items.isEmpty() && items.last().tag == tag && tag != Tag::separator;
        if (again && previousLength < fragmentSize) return std::unexpected(ParseError::unseparated);
        if (again)
            items.last().value += value;
        else
            items.append({tag, value.toByteArray()});
        message = message.sliced(length);
        previousLength = length;
    }
    return items;
}

std::optional<QByteArray> find(const QList<Item>& items, Tag tag) {
    const auto isWanted = [tag](const Item& item) { return item.tag == tag; };
    if (std::ranges::count_if(items, isWanted) != 1) return std::nullopt;
    return std::ranges::find_if(items, isWanted)->value;
}

QByteArray encode(const QList<Item>& items) {
    QByteArray message;
    for (const Item& item : items) {
        QByteArrayView rest = item.value;
        do {
            const QByteArrayView fragment = rest.first(std::min(rest.size(), fragmentSize));
            appendFragment(message, item.tag, fragment);
            rest = rest.sliced(fragment.size());
        } while (!rest.isEmpty());
    }
    return message;
}

}  // namespace velmora::Tlv8
