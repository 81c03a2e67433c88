#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/Discovery/Sightings.h"
#include "Support/ScriptedSystem.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

TEST(TxtRecord, ReadsFeaturesAsTwoNumbers) {
    const std::pair<QByteArray, std::optional<quint64>> cases[] = {
        {"features=0x7F8AD0,0x18BCF46", 0x018BCF46007F8AD0},  // the low half without its leading zeros
        {"features=0X39F7", 0x39F7},
        {"features=0xFFFFFFFF,0xFFFFFFFF", ~quint64{0}},
        {"fex=0Ip/AEbPiwFABA", 0x018BCF46007F8AD0},  // the same television's: two bits more than fit
        {"fex=!!!!", {}},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(TxtRecord::parse({text}).features, value) << text.constData();
    for (const char* text : {"0x100000000,0x1", "0x1,0x2,0x3", "0x-1", "0x 1", "0x", "0x1,", "119", ""})
        EXPECT_FALSE(TxtRecord::parse({QByteArray("features=") + text}).features) << text;
    EXPECT_EQ(TxtRecord::parse({"fex=0Ip/AEbPiwFABA", "features=0x77"}).features, 0x77);
}

TEST(TxtRecord, KeepsWhatIsWrittenAsReceiversWriteItAndNothingElse) {
    const QByteArray key(64, 'a');
    const TxtRecord good =
        TxtRecord::parse({"DeviceID=aa:bb:cc:dd:ee:0f", "flags=0x10684", "model=AppleTV11,1",
                          "srcvers=870.14.1", "osvers=17.4", "osvers=26.0", "acl=1", "act=2", "pk=" + key,
                          "pi=2e388006-13ba-4041-9a67-25dd4a43d536", "gid"});
    EXPECT_EQ(good.deviceId, u"AA:BB:CC:DD:EE:0F"_s);
    EXPECT_EQ(good.status, 0x10684U);
    EXPECT_TRUE(good.password) << "flags say so";
    EXPECT_EQ(good.systemVersion, u"17.4"_s) << "the first of a key counts";
    EXPECT_EQ(good.publicKey.size(), 32);
    EXPECT_EQ(good.accessControl + good.accessType, 3);
    EXPECT_EQ(good.pairingIdentifier, u"2e388006-13ba-4041-9a67-25dd4a43d536"_s);

    const TxtRecord bad = TxtRecord::parse(
        {"deviceid=AA:BB:CC:DD:EE", "flags=0x1ffffffffffffffff", "srcvers=1;rm", "osvers=.1", "acl=11",
         "pk=" + key + "a", "pi=none", "=x", "pw=maybe", "model=" + QByteArray(300, 'x'), "x"});
    EXPECT_EQ(bad, TxtRecord());
    EXPECT_EQ(TxtRecord::parse({"deviceid=00:00:00:00:00:00"}), TxtRecord()) << "shared by the careless";
    EXPECT_EQ(TxtRecord::parse(QList<QByteArray>(64, "a=b") << "pw=1"), TxtRecord());
}

TEST(TxtRecord, ShowsNamesWithoutTricks) {
    EXPECT_EQ(shownText(u"Zweites Gerät ☂ & <Co>"_s), u"Zweites Gerät ☂ & <Co>"_s);
    EXPECT_EQ(shownText(u" \x1b[2J a\r\n\tb\u202e\u200b "_s), u"[2J a b"_s);
    EXPECT_EQ(shownText(u"👩\u200d👧"_s), u"👩\u200d👧"_s);
    EXPECT_EQ(shownText(u"x"_s + u"👩"_s.repeated(40)).size(), 63) << "no half character at the end";
}

TEST(Receiver, TakesVideoOrSaysWhyNot) {
    const std::pair<QByteArray, QString> cases[] = {
        {"0x39F7", {}},                                        // Apple TV 2
        {"0x4A7FDFD5,0x3C155FDE", {}},                         // Apple TV 4K
        {"0x7F8AD0,0x18BCF46", {}},                            // a television with the queue only
        {"0x20F7", {}},                                        // Kodi
        {"0x4A7FCA00,0xBC354BD0", u"plays sound only"_s},      // HomePod mini
        {"0x527FFEE6,0x0", u"takes screen mirroring only"_s},  // UxPlay without video
        {"0x2", u"does not play movies"_s},
        {"nonsense", u"does not say what it can play"_s},
    };
    for (const auto& [text, reason] : cases) {
        const Receiver receiver{.announced = TxtRecord::parse({"features=" + text})};
        const auto takes = receiver.takesVideo();
        EXPECT_EQ(takes ? QString() : takes.error(), reason) << text.constData();
    }
    const Receiver linkLocal{.addresses = {QHostAddress(u"fe80::1%eth0"_s)},
                             .announced = TxtRecord{.features = 1}};
    EXPECT_TRUE(!linkLocal.takesVideo() && linkLocal.takesVideo().error().contains("link-local"_L1));
    EXPECT_TRUE(Receiver{}.takesVideo()) << "typed: nothing is known against it";
}

TEST(Receiver, IsMadeFromATypedAddress) {
    const std::pair<QString, QString> cases[] = {
        {u"192.0.2.7"_s, u"192.0.2.7:7000"_s},
        {u" 192.0.2.7:36667 "_s, u"192.0.2.7:36667"_s},
        {u"FD00::0005"_s, u"[fd00::5]:7000"_s},
        {u"[fd00::5]:7001"_s, u"[fd00::5]:7001"_s},
        {u"[fe80::1%eth0]"_s, u"[fe80::1%eth0]:7000"_s},
        {u"Living-Room.local"_s, u"living-room.local:7000"_s},
        {u"gerät.example:80"_s, u"xn--gert-noa.example:80"_s},
    };
    for (const auto& [typed, identifier] : cases) {
        const Receiver receiver = Receiver::fromText(typed).value_or(Receiver());
        EXPECT_EQ(receiver.identifier, identifier) << qPrintable(typed);
        EXPECT_NE(receiver.host.isEmpty(), receiver.address.isNull());
        EXPECT_TRUE(receiver.isTyped());
    }
    const QString bad =
        u"|:7000|tv:|tv:0|tv:65536|tv:+1|[fd00::5|[fd00::5]x|[]:7|[fd00::5]:|192.0.2|192.0.2.256|7|a b|-x|"
        "a..b|http://tv|fd00::x"_s;
    for (const QString& typed : bad.split(u'|')) EXPECT_FALSE(Receiver::fromText(typed)) << qPrintable(typed);
    EXPECT_FALSE(Receiver{.identifier = u"AA:BB:CC:DD:EE:FF"_s}.isTyped());
    EXPECT_FALSE(Receiver{.identifier = u"name=7000"_s}.isTyped());
}

QString texts(const QList<QHostAddress>& addresses) {
    QStringList list;
    for (const QHostAddress& address : addresses) list.append(address.toString());
    return list.join(u' ');
}

TEST(Addresses, ComeInTheOrderOfTheirUse) {
    QList<QHostAddress> given;
    for (const char* text :
         {"fe80::2%eth0", "169.254.3.4", "2001:db8::9", "fd00::5", "192.0.2.9", "192.0.2.9",
          "::ffff:192.0.2.10", "127.0.0.1", "::1", "0.0.0.0", "224.0.0.251", "ff02::fb", "::"})
        given.append(QHostAddress(QString::fromLatin1(text)));
    EXPECT_EQ(texts(Addresses::inOrder(given, false)),
              u"192.0.2.10 192.0.2.9 2001:db8::9 fd00::5 169.254.3.4 fe80::2%eth0"_s);
    EXPECT_TRUE(texts(Addresses::inOrder(given, true)).contains("127.0.0.1"_L1));
    EXPECT_FALSE(Addresses::carriesMedia(given[0]));
}

Sighting sighting(const QString& name, quint16 port, const char* address, const QByteArray& device) {
    return {.service = name,
            .hostName = u"h.local"_s,
            .port = port,
            .addresses = QList{QHostAddress(QString::fromLatin1(address))},
            .record = TxtRecord::parse({"features=0x77", "deviceid=" + device})};
}

TEST(Sightings, MergeIntoReceivers) {
    const QByteArray box = "AA:AA:AA:AA:AA:AA", computer = "BB:BB:BB:BB:BB:BB";
    QList<Sighting> sightings{
        sighting(u"TV (2)"_s, 7000, "192.0.2.8", box),  // the same box by radio and by cable
        sighting(u"TV"_s, 7000, "fd00::7", box),
        sighting(u"TV"_s, 7000, "192.0.2.7", box),
        sighting(u"Kodi"_s, 36667, "192.0.2.9", computer),  // two programs on one computer
        sighting(u"Uxplay"_s, 7100, "192.0.2.9", computer),
        sighting(u"bare"_s, 7000, "192.0.2.10", ""),  // no device: known by name
        sighting(u"bare"_s, 7000, "fd00::10", ""),
        sighting(u"Gone"_s, 7000, "", "CC:CC:CC:CC:CC:CC"),  // its address has expired
    };
    for (int round = 0; round < 2; ++round) {
        QString list;
        for (const Receiver& receiver : receiversFrom(sightings))
            list += receiver.name + u'|' + receiver.identifier + u'|' + texts(receiver.addresses) + u'\n';
        EXPECT_EQ(list,
                  u"bare|name=bare|192.0.2.10 fd00::10\nKodi|BB:BB:BB:BB:BB:BB 36667|192.0.2.9\n"
                  "TV|AA:AA:AA:AA:AA:AA|192.0.2.7 192.0.2.8 fd00::7\nUxplay|BB:BB:BB:BB:BB:BB|192.0.2.9\n"_s);
        std::ranges::reverse(sightings);  // the order of arrival shows nowhere
    }
}

TEST(KnownReceivers, ComeBackLatestFirstAndBounded) {
    test::MapPreferences preferences;
    KnownReceivers known(preferences);
    const Capability worked{u"26.1"_s, {Flavour::paired, Handover::playQueue}};
    Receiver tv = receiversFrom({sighting(u"TV"_s, 7000, "192.0.2.7", "AA:AA:AA:AA:AA:AA")}).first();
    known.remember(tv, worked);
    known.remember(*Receiver::fromText(u"kodi.local:36667"_s));
    tv.port = 7001;
    known.remember(tv);

    QList<Receiver> receivers = known.receivers();
    ASSERT_EQ(receivers.size(), 2);
    tv.announced.reset();
    EXPECT_EQ(receivers[0], tv);
    EXPECT_EQ(receivers[1], *Receiver::fromText(u"kodi.local:36667"_s));
    EXPECT_EQ(known.capability(tv.identifier), worked);
    known.forget(tv.identifier);
    EXPECT_EQ(known.receivers().size(), 1);
    for (int i = 1; i <= 100; ++i) known.remember(*Receiver::fromText(u"192.0.2.%1"_s.arg(i)));
    EXPECT_EQ(known.receivers().size(), KnownReceivers::limit);
    EXPECT_EQ(known.receivers().first().name, u"192.0.2.100"_s);
}

TEST(KnownReceivers, LeaveOutWhatMakesNoSense) {
    test::MapPreferences preferences;
    const KnownReceivers known(preferences);
    const QString good = uR"({"name":"TV","identifier":"x","address":"192.0.2.7","port":7000,"worked":{}})"_s;
    const QString twisted = QString(good).replace(u"7000"_s, u"70000"_s);
    const QString nowhere = QString(good).replace(u"192.0.2.7"_s, u"../etc"_s);
    KnownReceivers(preferences).remember(*Receiver::fromText(u"192.0.2.7"_s));
    const QString key = preferences.keys().value(0);
    for (const QString& text : {u"["_s, u"{}"_s, u"["_s + u" "_s.repeated(70000) + good + u']'}) {
        preferences.set(key, text);
        EXPECT_TRUE(known.receivers().isEmpty()) << qPrintable(text.left(40));
    }
    preferences.set(key, u"[7,null,[],{},"_s + good + u',' + twisted + u',' + nowhere + u']');
    EXPECT_EQ(known.receivers().size(), 1);
    EXPECT_EQ(known.capability(u"x"_s), std::nullopt);
}

}  // namespace
