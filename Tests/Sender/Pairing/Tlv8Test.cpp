#include "Sender/Pairing/Tlv8.h"

#include <gtest/gtest.h>

namespace velmora {

using Tlv8::Item;
using Tlv8::ParseError;
using Tlv8::Tag;

TEST(Tlv8Test, splitsAndJoinsLongValues) {
    const QByteArray message = Tlv8::encode({{Tag::state, "\3"}, {Tag::publicKey, QByteArray(300, '\0')}});
    EXPECT_EQ(message, QByteArray::fromHex("06010303ff") + QByteArray(255, '\0') +
                           QByteArray::fromHex("032d") + QByteArray(45, '\0'));
    for (const int size : {0, 1, 254, 255, 256, 509, 510, 511, 1000}) {
        const QList<Item> items{{Tag::salt, QByteArray(size, 's')}, {Tag::proof, "p"}};
        EXPECT_EQ(Tlv8::parse(Tlv8::encode(items)), items) << size;
    }
}

TEST(Tlv8Test, readsWhatReceiversSend) {
    const QByteArray message = QByteArray::fromHex("060102 1b0141 0300 ff00 0301aa ff00 0301bb");
    const auto items = Tlv8::parse(message);
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 7) << "unknown types and separators are items too";
    EXPECT_EQ(Tlv8::find(*items, Tag::state), QByteArray("\2"));
    EXPECT_FALSE(Tlv8::find(*items, Tag::publicKey)) << "ambiguous";
    EXPECT_FALSE(Tlv8::find(*items, Tag::salt));
    EXPECT_EQ(Tlv8::parse({}), QList<Item>());
}

TEST(Tlv8Test, refusesWhatIsAgainstTheRules) {
    const struct {
        QByteArray message;
        ParseError error;
    } cases[] = {
        {QByteArray::fromHex("06"), ParseError::truncated},
        {QByteArray::fromHex("0602ff"), ParseError::truncated},
        {QByteArray::fromHex("060101ff"), ParseError::truncated},
        {QByteArray::fromHex("060101060102"), ParseError::unseparated},
        {QByteArray::fromHex("0600060102"), ParseError::unseparated},
        {QByteArray::fromHex("060101ff0100"), ParseError::separator},
        {QByteArray::fromHex("03ff") + QByteArray(255, 'a') + QByteArray::fromHex("0310"),
         ParseError::truncated},
        {QByteArray(Tlv8::maximumSize + 2, '\xFF'), ParseError::tooLarge},
    };
    for (const auto& [message, error] : cases) {
        const auto items = Tlv8::parse(message);
        ASSERT_FALSE(items) << message.toHex().constData();
        EXPECT_EQ(items.error(), error) << message.toHex().constData();
    }
}

}  // namespace velmora
