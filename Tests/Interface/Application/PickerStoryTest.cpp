// The picker, the movie and a television that has its own will, as whoever holds the mouse meets them.
#include "Interface/Application/Linux/NetworkTelevisions.h"
#include "Interface/Views/MovieScreenModel.h"
#include "Interface/Views/SessionScreen.h"
#include "Platform/Window.h"
#include "Support/WaitFor.h"

#include <QFile>

#include <algorithm>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::waitFor;
using enum MenuRow::Sign;
using Flavour = test::TelevisionOptions::Flavour;
using Shown = test::SimulatedPlayer::State;

/// A window without its glass: the session, what the screen says, and the picker over the real sender.
class Seat {
  public:
    explicit Seat(test::Process& shared) : process(shared) { picker.setOpen(true); }

    test::Process& process;
    QList<Receiver> announced;
    bool isFindable = true;
    std::unique_ptr<MediaServer> server = MediaServer::start().value();
    NetworkOutputContext context{
        process.clock,
        {.receivers = [this] { return receivers(); },
         .output = {.resolve = [this](const Receiver& receiver) { return resolve(receiver); },
                    .makePlayback =
                        [this] {
                            return std::make_unique<RemotePlayback>(process.clock, *server, process.memory);
                        }}}};
    NetworkTelevisions televisions{process.clock, process.discovery, context, process.memory};
    Session session{process.world, &context};
    RoutePickerModel picker{process.clock, televisions, &context};
    MovieScreenModel screen;
    SessionScreen view{session, process.desktop, screen, picker};

    [[nodiscard]] MenuRow row(const QString& name) {
        picker.setOpen(true);
        const QList<MenuRow>& rows = picker.rows()->rows();
        const auto found = std::ranges::find(rows, name, &MenuRow::text);
        return found == rows.end() ? MenuRow() : *found;
    }
    void pick(const QString& name) {
        const qsizetype place = picker.rows()->rows().indexOf(row(name));
        ASSERT_GE(place, 0) << name.toStdString();
        picker.rows()->choose(static_cast<int>(place));
    }
    /// On the television, and the session through with its start.
    [[nodiscard]] bool shows() {
        return session.canControlPlayback() &&
               context.output().state().phase == RemotePlayback::Phase::playing;
    }
    [[nodiscard]] bool isAsked() {
        return waitFor([this] { return picker.hasQuestion() && picker.canAnswer(); });
    }

  private:
    QList<Receiver> receivers() {
        QList<Receiver> all = announced;
        const QList<Receiver> known = process.known.receivers();
        for (const Receiver& one : known)
            if (std::ranges::count(all, one.identifier, &Receiver::identifier) == 0) all << one;
        return all;
    }
    QCoro::Task<RemoteOutput::Resolved> resolve(Receiver receiver) {
        while (!isFindable) co_await process.clock.sleep(100ms);
        co_return receiver;
    }
};

class PickerStory : public testing::Test {
  protected:
    ~PickerStory() override {
        leave();
        EXPECT_EQ(television->complaints().join(u'\n').toStdString(), "");
    }

    void switchOn(const test::TelevisionOptions& options) {
        television = std::make_unique<test::Television>(process.clock, options);
        ASSERT_TRUE(television->listen());
        Receiver receiver = television->receiver();
        receiver.identifier = u"02:00:00:00:00:01"_s;
        process.memory.forget(receiver.identifier);
        seat->announced = {receiver};
    }
    void leave() {
        seat->session.cancel();
        bool isLeft = false;
        seat->context.output().finish([&isLeft] { isLeft = true; });
        EXPECT_TRUE(waitFor([&isLeft] { return isLeft; }));
        EXPECT_EQ(television->player().state(), Shown::idle);
        seat.reset();
    }
    void open() {
        const QString movie = folder.filePath(u"Long.mp4"_s);
        QFile::copy(QStringLiteral(VELMORA_SAMPLE_MOVIES "/long.mp4"), movie);
        seat->session.open(QUrl::fromLocalFile(movie), false);
    }
    [[nodiscard]] qsizetype requests(const QByteArray& target) const {
        return std::ranges::count_if(television->requests(), [&target](const QByteArray& request) {
            return request.contains(target);
        });
    }
    void passes(Clock::Duration duration) {
        const Clock::Instant end = process.clock.now() + duration;
        EXPECT_TRUE(waitFor([&] { return process.clock.now() >= end; }, 60));
    }

    QTemporaryDir folder;
    test::Process process;
    std::unique_ptr<test::Television> television;
    std::unique_ptr<Seat> seat = std::make_unique<Seat>(process);
    const QString name = test::TelevisionOptions().name;
};

TEST_F(PickerStory, WhoLooksForTheCodeHasTheTimeForIt) {
    switchOn({.flavour = Flavour::paired});
    EXPECT_EQ(seat->row(name).sign, locked);
    EXPECT_EQ(seat->row(name).detail, u"Asks for a code"_s);
    open();
    seat->pick(name);
    ASSERT_TRUE(seat->isAsked());
    EXPECT_TRUE(seat->picker.asksForCode());
    EXPECT_EQ(seat->picker.questionTitle(), u"Enter the code for Television"_s);
    passes(40s);
    EXPECT_TRUE(seat->picker.hasQuestion());
    EXPECT_EQ(seat->screen.status(), u"Sending to Television…"_s);
    EXPECT_EQ(requests("/pair-pin-start"), 1) << "the code on the screen stays the one to type";

    // Wrong twice: the second time the television wants its rest.
    for (const QString& wrong : {u"0000"_s, u"1111"_s}) {
        ASSERT_TRUE(seat->isAsked());
        seat->picker.answer(wrong);
        EXPECT_TRUE(seat->picker.hasQuestion()) << "stays while the television thinks";
        EXPECT_FALSE(seat->picker.canAnswer());
        ASSERT_TRUE(waitFor([this] { return seat->picker.questionError().contains(u"didn't match"_s); }));
    }
    ASSERT_TRUE(waitFor([this] { return seat->picker.questionError().contains(u"Try again in 0:1"_s); }));
    EXPECT_FALSE(seat->picker.canAnswer());
    EXPECT_FALSE(seat->row(name).canChoose);
    ASSERT_TRUE(seat->isAsked());
    seat->picker.answer(television->pin());
    ASSERT_TRUE(waitFor([this] { return seat->shows(); }));
    EXPECT_FALSE(seat->picker.hasQuestion());
    EXPECT_EQ(seat->screen.status(), u"Playing on Television"_s);
    EXPECT_EQ(seat->row(name).sign, chosen);
}

TEST_F(PickerStory, AnAnswerAfterTheSessionGaveUpStartsTheMovie) {
    switchOn({.flavour = Flavour::legacyPin});
    seat->isFindable = false;
    open();
    seat->pick(name);
    ASSERT_TRUE(waitFor([this] { return seat->session.isStalled() && !seat->session.isPlaying(); }, 60));
    seat->isFindable = true;
    ASSERT_TRUE(seat->isAsked());
    seat->picker.answer(television->pin());
    EXPECT_TRUE(waitFor([this] { return seat->shows(); }));
}

TEST_F(PickerStory, WithoutAnAnswerTheMovieStaysHere) {
    switchOn({.flavour = Flavour::paired});
    open();
    seat->pick(name);
    ASSERT_TRUE(seat->isAsked());
    seat->picker.dismiss();
    EXPECT_FALSE(seat->picker.hasQuestion());
    ASSERT_TRUE(waitFor([this] { return !seat->session.airPlay().deviceName(); }));
    EXPECT_EQ(seat->screen.status(), u"Not sent to Television: it asks for a code"_s);
    EXPECT_FALSE(seat->session.isPlaying());
    EXPECT_EQ(seat->row(u"This computer"_s).sign, chosen);
    passes(20s);
    EXPECT_FALSE(seat->picker.hasQuestion());

    // A movie that is closed takes the question with it.
    seat->pick(name);
    ASSERT_TRUE(seat->isAsked());
    seat->session.cancel();
    EXPECT_TRUE(waitFor([this] { return !seat->picker.hasQuestion(); }));
    EXPECT_EQ(seat->screen.status().contains(u"Not sent"_s), false);
}

TEST_F(PickerStory, APasswordIsRememberedUntilItIsForgotten) {
    switchOn({.flavour = Flavour::transient, .password = u"geheim"_s});
    const auto isLocked = [this] { return seat->row(name).sign == locked; };
    EXPECT_TRUE(isLocked());
    open();
    seat->pick(name);
    ASSERT_TRUE(seat->isAsked());
    EXPECT_FALSE(seat->picker.asksForCode());
    seat->picker.answer(u"falsch"_s);
    ASSERT_TRUE(waitFor([this] { return seat->picker.questionError() == u"That password didn't match."_s; }));
    seat->picker.answer(u"geheim"_s);
    ASSERT_TRUE(waitFor([this] { return seat->shows(); }));

    for (const bool isForgotten : {false, true}) {
        // As in the next start of the program.
        const QList<Receiver> stillThere = seat->announced;
        leave();
        seat = std::make_unique<Seat>(process);
        seat->announced = stillThere;
        if (isForgotten) {
            const MenuRow known = seat->row(name);
            ASSERT_TRUE(known.canForget);
            seat->picker.rows()->forget(static_cast<int>(seat->picker.rows()->rows().indexOf(known)));
        }
        EXPECT_EQ(isLocked(), isForgotten);
        open();
        seat->pick(name);
        EXPECT_TRUE(isForgotten ? seat->isAsked() : waitFor([this] { return seat->shows(); }));
    }
}

TEST_F(PickerStory, ListsWhatIsAndWasThere) {
    switchOn({.name = u"Den"_s});
    Receiver speaker = television->receiver();
    speaker.name = u"Kitchen"_s;
    speaker.identifier = u"02:00:00:00:00:77"_s;
    speaker.announced = TxtRecord::parse({"features=0x200"});
    seat->announced << speaker;
    EXPECT_EQ(seat->row(u"Kitchen"_s).detail, u"Plays sound only"_s);
    EXPECT_FALSE(seat->row(u"Kitchen"_s).canChoose);
    open();
    seat->pick(u"Den"_s);
    ASSERT_TRUE(waitFor([this] { return seat->shows(); }));
    seat->announced.clear();
    Q_EMIT seat->televisions.televisionsChanged();
    EXPECT_EQ(seat->row(u"Den"_s).sign, chosen);
    EXPECT_EQ(seat->row(u"Den"_s).detail, u"Not seen on the network"_s);

    // At the television.
    television->player().stop(u"left"_s);
    ASSERT_TRUE(waitFor([this] { return !seat->session.airPlay().deviceName(); }));
    EXPECT_EQ(seat->screen.status(), u"The movie was stopped at the television."_s);
    EXPECT_EQ(seat->row(u"This computer"_s).sign, chosen);

    for (const QString& nonsense : {u"two words"_s, u"192.0.2.1:99999"_s, u"[::1"_s})
        EXPECT_NE(seat->picker.add(nonsense), QString()) << nonsense.toStdString();
    EXPECT_FALSE(seat->context.outputDevice());
    EXPECT_EQ(seat->picker.add(u"[2001:db8::7]:7001"_s), QString());
    EXPECT_EQ(seat->row(u"[2001:db8::7]:7001"_s).sign, chosen);
    const QString address = u"127.0.0.1:%1"_s.arg(television->receiver().port);
    EXPECT_EQ(seat->picker.add(u' ' + address + u' '), QString());
    EXPECT_TRUE(waitFor([this] { return seat->shows(); }));
    EXPECT_EQ(seat->screen.status(), u"Playing on "_s + address);

    KnownReceivers afterRestart(process.settings);
    EXPECT_EQ(afterRestart.receivers().first().name, address);
}

}  // namespace
}  // namespace velmora
