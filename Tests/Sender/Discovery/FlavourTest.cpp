#include "Sender/Discovery/Flavour.h"

#include <gtest/gtest.h>

using namespace velmora;
using enum Flavour;
using enum Handover;
using enum Answers::Step;

namespace {

const QByteArray appleTv2 = "features=0x39F7";
const QByteArray appleTv3 = "features=0x5A7FFFF7,0x1E";
const QByteArray appleTv4K = "features=0x4A7FDFD5,0x3C155FDE";
const QByteArray television = "features=0x7F8AD0,0x18BCF46";
const QByteArray kodi = "features=0x20F7";
const QByteArray apple = "model=AppleTV11,1";
const QByteArray system17 = "osvers=17.4";

Receiver receiver(const QList<QByteArray>& txt) {
    return {.name = QStringLiteral("TV"), .announced = TxtRecord::parse(txt)};
}
const Receiver typed{.name = QStringLiteral("TV")};

/// A course in one line. An approach is two letters, (p)lain, (k)eys, (l)egacy PIN, (t)ransient or pa(i)red
/// and (T)ext, (P)lay or (Q)ueue; then what is needed, and `!` for an explanation.
std::string told(const Course& course) {
    std::string words;
    for (const auto& [flavour, handover] : course.approaches)
        words += {"pklti"[static_cast<int>(flavour)], "TPQ"[static_cast<int>(handover)], ' '};
    if (course.needsPin) words += "PIN ";
    if (course.needsPassword) words += "password ";
    if (!course.explanation.isEmpty()) words += "! ";
    return words.substr(0, words.empty() ? 0 : words.size() - 1);
}

TEST(Flavour, FollowsFromTheAnnouncement) {
    struct Case {
        QList<QByteArray> txt;
        bool paired;
        const char* course;
    };
    const Case cases[] = {
        {{"features=0x4A7FCA00,0xBC354BD0"}, false, "!"},  // HomePod mini
        {{appleTv2}, false, "pP pT"},
        {{kodi, "pw=1"}, false, "pP pT password"},
        {{kodi, "flags=0x80"}, false, "pP pT password"},
        {{appleTv3}, false, "pP pT kP kT lP lT"},
        {{appleTv3, "flags=0x200"}, false, "lP lT PIN"},
        {{appleTv3, "flags=0x8"}, true, "lP lT"},
        {{appleTv4K, apple, system17}, false, "iP iQ PIN"},
        {{appleTv4K, apple, system17}, true, "iP iQ"},
        {{appleTv4K, apple, "osvers=26.0"}, true, "iQ"},
        {{appleTv4K, apple, "srcvers=870.14.1"}, true, "iQ"},
        {{appleTv4K, apple}, true, "iQ iP"},
        {{appleTv4K, apple, "acl=1"}, false, "!"},
        {{appleTv4K, apple, "act=2"}, false, "!"},
        {{appleTv4K, apple, system17, "acl=1"}, true, "iP iQ"},
        {{appleTv4K, apple, "osvers=26.6", "pw=true"}, false, "iQ PIN password"},
        {{television}, false, "tQ tP iQ iP"},
        {{television, "flags=0x244"}, false, "iQ iP PIN"},
        {{television}, true, "iQ iP"},
        {{"features=0x1,0x4040"}, false, "iP iQ PIN"},  // home pairing alone
    };
    for (const auto& [txt, paired, course] : cases)
        EXPECT_EQ(told(Course::decide(receiver(txt), {.pairing = paired}, {})), course)
            << txt.join(' ').constData();
    EXPECT_EQ(told(Course::decide(typed, {}, {})), "pP pT tQ tP iQ iP");
}

TEST(Flavour, IsOverruledByTheReceiversAnswers) {
    struct Answer {
        Approach to;
        Answers::Step step;
        int status;
    };
    struct Case {
        Receiver receiver;
        bool paired;
        QList<Answer> answers;
        const char* course;
    };
    const Receiver tv = receiver({television}), box = receiver({appleTv4K, apple, system17});
    const Receiver old = receiver({appleTv3}), player = receiver({kodi});
    const Approach pP{plain, play}, kP{legacyKeys, play}, tQ{transient, playQueue}, iP{paired, play},
        iQ{paired, playQueue};
    const Case cases[] = {
        {player, false, {{pP, handover, 401}}, "pP pT password"},
        {player, false, {{pP, handover, 401}, {pP, handover, 200}}, "pP pT"},
        {player, false, {{pP, handover, 400}}, "pT"},
        {player, false, {{pP, handover, 500}}, ""},
        {player, false, {{pP, handover, 470}}, "lP lT iP iQ PIN"},
        {player, false, {{pP, handover, 453}}, "!"},
        {old, false, {{pP, handover, 403}}, "kP kT lP lT"},
        {old, false, {{pP, handover, 403}, {kP, pairing, 470}}, "lP lT PIN"},
        {tv, false, {{tQ, pairing, 470}}, "iQ iP PIN"},
        {tv, false, {{tQ, session, 401}}, "tQ tP iQ iP password"},
        {tv, true, {{iQ, handover, 404}}, "iP"},
        // The receiver has forgotten us; with a new PIN all is well.
        {box, true, {{iP, pairing, 470}}, "iP iQ PIN"},
        {box, true, {{iP, pairing, 470}, {iP, pairing, 200}}, "iP iQ"},
        {box, false, {{iP, pairing, Answers::closed}}, "iP iQ PIN"},
        {box, false, {{iP, showPin, 400}}, "!"},
        {box, false, {{iP, showPin, 453}}, "iP iQ PIN"},
        {box, true, {{iP, handover, 501}}, "iQ"},
        // An encrypted receiver behind a typed address drops what is plain.
        {typed, false, {{pP, handover, Answers::closed}}, "tQ tP iQ iP"},
        {typed, false, {{pP, handover, 404}}, "tQ tP iQ iP"},
        // Once it has the movie, or may have it, nothing more.
        {tv, true, {{iQ, handover, 200}}, ""},
        {tv, true, {{iQ, handover, Answers::timedOut}}, ""},
        {tv, true, {{iQ, handover, Answers::closed}}, ""},
        {box, true, {{iP, handover, 200}}, "iP iQ"},
    };
    for (const auto& [receiver, isPaired, answers, course] : cases) {
        Answers heard;
        for (const auto& [to, step, status] : answers) heard.note(to, step, status);
        EXPECT_EQ(told(Course::decide(receiver, {.pairing = isPaired}, heard)), course)
            << answers.last().status;
    }

    Answers heard;
    heard.note(iP, handover, 200);
    heard.noteSilence(iP);
    EXPECT_EQ(told(Course::decide(box, {.pairing = true}, heard)), "iQ");
    heard.noteFetched();
    EXPECT_EQ(told(Course::decide(box, {.pairing = true}, heard)), "");
}

TEST(Flavour, StartsWithWhatWorkedOnTheSameVersion) {
    const Capability queue{QStringLiteral("17.4"), {paired, playQueue}};
    const Capability stale{QStringLiteral("26.0"), {paired, play}};
    const auto course = [](const Receiver& receiver, const Capability& worked) {
        return told(Course::decide(receiver, {.pairing = true}, {}, worked));
    };
    EXPECT_EQ(course(receiver({appleTv4K, apple, system17}), queue), "iQ iP");
    EXPECT_EQ(course(receiver({appleTv4K, apple, "osvers=18.0"}), queue), "iP iQ");
    EXPECT_EQ(course(receiver({appleTv4K, apple, "osvers=26.0"}), stale), "iQ") << "play would do nothing";
    EXPECT_EQ(course(typed, queue).substr(0, 2), "iQ") << "not seen: no other version is known";
}

}  // namespace
