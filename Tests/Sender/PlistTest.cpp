#include "Sender/Plist.h"

#include <gtest/gtest.h>

#include <random>

namespace velmora {
namespace {

TEST(Plist, KeepsTypesThroughBothForms) {
    const QVariantMap inner{{"start", 0.0}, {"duration", 60.5}};
    const QVariantMap value{{"flag", true},
                            {"whole", 1.0},
                            {"integer", qlonglong(5'000'000'000)},
                            {"text", QStringLiteral("Zweites Gerät ☂ & <Co>")},
                            {"data", QByteArray("\0\xff\x01", 3)},
                            {"ranges", QVariantList{inner, inner}}};
    EXPECT_EQ(Plist::decode(Plist::encodeBinary(value)).value(), QVariant(value));
    EXPECT_EQ(Plist::decode("\n \t" + Plist::encodeXml(value) + "\n\n").value(), QVariant(value));
}

TEST(Plist, ReadsWhatReceiversWrite) {
    const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
    EXPECT_EQ(Plist::decode(head + "<dict><key>readyToPlay</key><false/></dict></plist>")
                  .value()
                  .toMap()
                  .value("readyToPlay"),
              QVariant(false));
    EXPECT_EQ(Plist::decode(head + "<dict><key>code</key><integer>-6707</integer></dict></plist>")
                  .value()
                  .toMap()
                  .value("code"),
              QVariant(-6707LL));
    const QByteArray value = QByteArray::fromHex(
        "62706c6973743030d101025576616c75651001080b1100000000000001010000000000000003000000000000000000000000"
        "00"
        "000013");
    EXPECT_EQ(Plist::decode(value).value(), QVariant(QVariantMap{{"value", 1LL}}));
}

/// An array of arrays, `levels` deep, each holding the next one `copies` times.
QByteArray nested(int levels, int copies) {
    QByteArray bytes = "bplist00";
    QByteArray table;
    for (int level = 0; level < levels; ++level) {
        const bool isLast = level + 1 == levels;
        table += QByteArray::fromHex(QByteArray::number(int(bytes.size()) + 0x10000, 16).last(4));
        bytes += char(0xa0 | (isLast ? 0 : copies));
        for (int copy = 0; copy < copies && !isLast; ++copy)
            bytes += QByteArray::fromHex(QByteArray::number(level + 1 + 0x10000, 16).last(4));
    }
    const auto wide = [](qsizetype number) {
        return QByteArray::fromHex(QByteArray::number(number, 16).rightJustified(16, '0'));
    };
    const qsizetype tableAt = bytes.size();
    return bytes + table + QByteArray(6, '\0') + "\x02\x02" + wide(levels) + wide(0) + wide(tableAt);
}

TEST(Plist, RefusesHostileDocuments) {
    EXPECT_TRUE(Plist::decode(nested(10, 2)).has_value());
    const QByteArray manyTags = "<plist>" + QByteArray("<array>").repeated(100'000);
    const QByteArray hidden = "<plist>" + QByteArray("<dict><key>a</key><!-- </dict> -->").repeated(50'000);
    QByteArray outside = nested(2, 1);
    outside[outside.size() - 1] = '\x7f';
    for (const QByteArray& hostile :
         {QByteArray(), QByteArray("bplist00"), QByteArray("garbage"), nested(10'000, 1), nested(30, 2),
          manyTags, hidden, outside, QByteArray("bplist00").leftJustified(2'000'000, ' ')})
        EXPECT_FALSE(Plist::decode(hostile).has_value()) << hostile.left(40).toStdString();
}

TEST(Plist, SurvivesDamage) {
    const QVariantMap value{{"a", QVariantList{1LL, 2.5, true}}, {"bb", QStringLiteral("text")}};
    std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same damage every time
    int decoded = 0;
    for (const QByteArray& whole : {Plist::encodeBinary(value), Plist::encodeXml(value)}) {
        for (int round = 0; round < 5000; ++round) {
            QByteArray bytes = whole.left(qsizetype(random() % (whole.size() * 4)));
            for (int hit = 0; hit < 3 && !bytes.isEmpty(); ++hit)
                bytes[qsizetype(random() % bytes.size())] = char(random());
            decoded += Plist::decode(bytes).has_value() ? 1 : 0;
        }
    }
    EXPECT_GT(decoded, 0);
    EXPECT_LT(decoded, 10'000);
}

}  // namespace
}  // namespace velmora
