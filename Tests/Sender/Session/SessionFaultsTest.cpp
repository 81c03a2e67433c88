// A session as a whole, at the interface that judges it: the order in which receivers take it, and what is
// left of it wherever they refuse, fall silent or hang up. The television is real, and strict about all the
// rest.
#include "Sender/ControlFactory.h"
#include "Sender/Plist.h"
#include "Sender/Session/SessionMessages.h"
#include "Sender/Window.h"

#include <gmock/gmock.h>

#include <deque>
#include <map>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::waitFor;
using testing::AllOf;
using testing::Ge;
using testing::Le;
using Kind = ConnectionError::Kind;
using Step = Answers::Step;
using Tv = test::TelevisionOptions;

const Tv box{.flavour = Tv::Flavour::transient, .handover = Tv::Handover::queue, .model = u"AppleTV14,1"_s};
const Tv television{.flavour = Tv::Flavour::transient, .handover = Tv::Handover::queue};
const Tv oldBox{.flavour = Tv::Flavour::transient, .model = u"AppleTV6,2"_s};

/// What a request is about, in one word or two.
QString nameOf(const Request& request) {
    const auto decoded = [](const QByteArray& bytes) {
        return Plist::decode(bytes).value_or(QVariant()).toMap();
    };
    const QVariantMap body = decoded(request.body);
    if (const auto inner = SessionMessages::unwrapped(body)) {
        const QVariantMap content = decoded(*inner);
        const QVariant detail = content.value(u"property"_s, content.value(u"rate"_s));
        return (content.value(u"type"_s).toString() + u' ' + detail.toString()).trimmed();
    }
    if (request.target.startsWith('/')) return QString::fromLatin1(request.target);
    if (request.method != "SETUP") return QString::fromLatin1(request.method);
    const QVariantMap stream = SessionMessages::firstStream(body);
    if (stream.isEmpty()) return u"SETUP "_s + body.value(u"timingProtocol"_s).toString();
    return stream.value(u"controlType"_s) == 1 ? u"SETUP queue"_s : u"SETUP remote"_s;
}

class SessionFaultsTest : public test::WindowTest {
  protected:
    using Outcome = VideoControl::Outcome;
    using Script = std::map<QString, std::deque<int>>;

    /// Switches a television on that answers these requests so.
    void switchOn(Tv options, const Script& script = {}, const test::Misbehaviours& misbehaviours = {}) {
        control.reset();
        QCoreApplication::processEvents();
        log.clear();
        answers = script;
        options.misbehaviours = misbehaviours;
        options.misbehaviours.insert(Misbehaviour::neverFetches, 0);
        tv = std::make_unique<test::Television>(clock, options);
        ASSERT_TRUE(tv->listen());
        tv->onRequest([this](const Request& request) -> std::optional<int> {
            const QString name = nameOf(request);
            const bool isAside = name.startsWith(u"/pair-"_s) || name == "/feedback"_L1 || name == "/info"_L1;
            if (!isAside) log.append(name);
            const auto found = answers.find(name);
            if (found == answers.end() || found->second.empty()) return std::nullopt;
            const int status = found->second.front();
            found->second.pop_front();
            return status;
        });
        const bool hasQueue = options.handover == Tv::Handover::queue;
        control = makeControl(clock, {Flavour::transient, hasQueue ? Handover::playQueue : Handover::play},
                              Access::make(clock, tv->receiver(), Flavour::transient, {}));
    }
    template <class T>
    T run(QCoro::Task<T> task) {
        return QCoro::waitFor(std::move(task));
    }
    Outcome openAndPlay() {
        const Outcome opened = run(control->open());
        const VideoControl::Movie movie{.url = QUrl(u"http://127.0.0.1:1/t/movie.mp4"_s),
                                        .start = 0,
                                        .duration = 120,
                                        .uuid = u"6B29FC40-CA47-1067-B31D-00DD010662DA"_s};
        return opened ? run(control->play(movie)) : opened;
    }
    [[nodiscard]] bool hears(const QString& name, qsizetype times = 1) {
        return waitFor([&] { return log.count(name) >= times; });
    }
    [[nodiscard]] std::string complaints() const { return tv->complaints().join(u';').toStdString(); }

    test::FastClock clock{5};
    std::unique_ptr<test::Television> tv;
    Script answers;
    QStringList log;
    std::shared_ptr<VideoControl> control;
};

TEST_F(SessionFaultsTest, StartsInTheOrderThatReceiversTake) {
    const QString remote = u"SETUP None|RECORD|SETUP remote|"_s;
    const QString rest =
        u"|RECORD|SETUP queue|insertPlayQueueItem|setProperty isInterestedInDateRange|"
        "setProperty actionAtItemEnd|setRate 1"_s;
    const struct {
        Tv options;
        Script answers;
        QString log;
    } cases[] = {
        {box, {}, remote + u"SETUP PTP"_s + rest},
        {box, {{u"SETUP PTP"_s, {400}}}, remote + u"SETUP PTP|SETUP NTP"_s + rest},
        {television, {}, u"SETUP NTP"_s + rest},
        // One does not answer as long as its questions for the time get lost.
        {television, {{u"SETUP NTP"_s, {test::silence}}}, u"SETUP NTP|TEARDOWN|SETUP PTP"_s + rest},
        {oldBox,
         {},
         u"SETUP NTP|RECORD|/play|/setProperty?isInterestedInDateRange|/setProperty?actionAtItemEnd|"
         "/rate?value=1.000000|/setProperty?forwardEndTime|/setProperty?reverseEndTime"_s},
    };
    for (const auto& entry : cases) {
        switchOn(entry.options, entry.answers);
        EXPECT_TRUE(openAndPlay());
        EXPECT_EQ(log.join(u'|').toStdString(), entry.log.toStdString());
        EXPECT_EQ(complaints(), "");
    }
}

TEST_F(SessionFaultsTest, EndsWhatItCouldNotFinish) {
    using test::hangUp;
    using test::silence;
    const struct {
        Tv options;
        Script answers;
        std::optional<Kind> kind;  // nothing: it plays
        int status = 0;
        Step step = Step::session;
        int farewells = 1;
    } cases[] = {
        {television, {{u"SETUP NTP"_s, {470}}}, Kind::status, 470, Step::session, 0},
        {television, {{u"RECORD"_s, {500}}}, Kind::status, 500},
        {television, {{u"SETUP queue"_s, {404}}}, Kind::status, 404},
        {television, {{u"SETUP queue"_s, {silence}}}, Kind::timeout},
        {television, {{u"insertPlayQueueItem"_s, {500}}}, Kind::status, 500, Step::handover},
        {television, {{u"insertPlayQueueItem"_s, {silence}}}, Kind::timeout, 0, Step::handover},
        {television, {{u"insertPlayQueueItem"_s, {hangUp}}}, Kind::closed, 0, Step::handover, 0},
        {television, {{u"setProperty actionAtItemEnd"_s, {silence}}}, Kind::timeout, 0, Step::handover},
        // The item is in the queue: as if the connection were gone, so that no other way is tried.
        {television, {{u"setRate 1"_s, {500}}}, Kind::closed, 0, Step::handover},
        // Without a remote control and with NTP it would show no picture.
        {box, {{u"SETUP None"_s, {500}}, {u"SETUP PTP"_s, {400}}}, Kind::status, 400, Step::session, 0},
        {oldBox, {{u"RECORD"_s, {500}}}, Kind::status, 500},
        {oldBox, {{u"/play"_s, {500, 500, 500}}}, {}, 0, {}, 0},
        {oldBox, {{u"/play"_s, {500, 500, 500, 500}}}, Kind::status, 500, Step::handover},
        {oldBox, {{u"/play"_s, {404}}}, Kind::status, 404, Step::handover},
        {oldBox, {{u"/setProperty?actionAtItemEnd"_s, {404}}}, {}, 0, {}, 0},
        {oldBox, {{u"/rate?value=1.000000"_s, {hangUp}}}, Kind::closed, 0, Step::handover, 0},
    };
    for (const auto& entry : cases) {
        switchOn(entry.options, entry.answers);
        SCOPED_TRACE(entry.answers.begin()->first.toStdString());
        const Outcome outcome = openAndPlay();
        ASSERT_EQ(outcome.has_value(), !entry.kind);
        if (!outcome) {
            EXPECT_EQ(outcome.error().kind, *entry.kind);
            EXPECT_EQ(outcome.error().status, entry.status);
            EXPECT_EQ(outcome.error().step, entry.step);
        }
        EXPECT_TRUE(hears(u"TEARDOWN"_s, entry.farewells));
        EXPECT_EQ(log.count(u"TEARDOWN"_s), entry.farewells);
        EXPECT_EQ(complaints(), "");
    }
    switchOn(television, {}, {{Misbehaviour::opensEventsLate, 60}});
    EXPECT_EQ(openAndPlay().error().step, Step::session);
    EXPECT_TRUE(hears(u"TEARDOWN"_s));
}

TEST_F(SessionFaultsTest, SteersByTheRemoteControlOrElseByTheQueue) {
    const test::Misbehaviours cases[] = {
        {}, {{Misbehaviour::mutesRemote, 0}}, {{Misbehaviour::mutesRemote, 1}}};
    for (const test::Misbehaviours& misbehaviours : cases) {
        switchOn(box, {}, misbehaviours);
        ASSERT_TRUE(openAndPlay());
        EXPECT_TRUE(run(control->setRate(1))) << "as whoever called `play` does";
        log.clear();
        EXPECT_TRUE(run(control->setRate(0)));
        EXPECT_TRUE(run(control->seek(20)));
        EXPECT_EQ(log, misbehaviours.isEmpty() ? QStringList() : QStringList({u"setRate 0"_s, u"seek"_s}));
        EXPECT_TRUE(run(control->stop()));
        control->close();
        EXPECT_TRUE(hears(u"TEARDOWN"_s, 2));
        EXPECT_EQ(log.filter(u"stop"_s).size(), 1);
        EXPECT_EQ(complaints(), "");
    }
}

TEST_F(SessionFaultsTest, NoticesSilenceByItsSignsOfLife) {
    switchOn(television, {{u"/feedback"_s, {test::silence, test::silence}}, {u"playbackInfo"_s, {404}}});
    ASSERT_TRUE(openAndPlay());
    control->onEvent([](const PlaybackEvent& event) {
        EXPECT_NE(event.state, PlaybackEvent::State::stopped) << "nobody stopped it";
    });
    EXPECT_TRUE(waitFor([&] { return !control->isOpen(); }));
    const auto reported = run(control->playbackInfo());
    ASSERT_FALSE(reported);
    EXPECT_EQ(reported.error().kind, Kind::timeout);
}

TEST_F(SessionFaultsTest, AsksForThePositionOncePerSecondAndOnlyWhereThatIsAnswered) {
    for (const bool isAnswered : {true, false}) {
        switchOn(television, {{u"playbackInfo"_s, isAnswered ? std::deque<int>() : std::deque<int>{404}}});
        ASSERT_TRUE(openAndPlay());
        const Clock::Instant start = clock.now();
        while (clock.now() - start < 4s) {
            EXPECT_TRUE(run(control->playbackInfo()));
            EXPECT_TRUE(waitFor([&, from = clock.now()] { return clock.now() - from > 200ms; }));
        }
        const auto asked = log.count(u"playbackInfo"_s);
        EXPECT_THAT(asked, isAnswered ? AllOf(Ge(2), Le(5)) : AllOf(Ge(1), Le(1)));
    }
}

TEST_F(SessionFaultsTest, EndsAStartThatNobodyWantsAnyMore) {
    switchOn(box, {{u"SETUP PTP"_s, {test::silence}}});
    test::VirtualClock still;  // an end at once takes no time
    control = makeControl(still, {Flavour::transient, Handover::playQueue},
                          Access::make(still, tv->receiver(), Flavour::transient, {}));
    {
        const auto opening = control->open();
        ASSERT_TRUE(waitFor([&] {
            still.advance(0s);
            return log.contains(u"SETUP PTP"_s);
        }));
        control->abandon();
        EXPECT_TRUE(hears(u"TEARDOWN"_s, 2));
    }
    control.reset();
    QCoreApplication::processEvents();
}

}  // namespace
}  // namespace velmora
