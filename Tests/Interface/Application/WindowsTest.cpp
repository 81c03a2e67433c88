#include "Interface/Application/PrivateBus.h"
#include "Interface/Application/VelmoraApp.h"
#include "Playback/Story.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QTest>
#include <QTimer>

namespace velmora::test {
namespace {

using enum LaunchRequest::Action;

class NoSource : public UpdateSource {
  public:
    void fetch(const QUrl& /*feed*/, Fetched /*fetched*/) override { ADD_FAILURE() << "contacted a server"; }
};

class NoTelevisions : public Televisions {
  public:
    [[nodiscard]] QList<Television> televisions() const override { return {}; }
    [[nodiscard]] QString unavailableReason() const override { return {}; }
    void look() override {}
    [[nodiscard]] QString add(const QString& /*address*/) override { return {}; }
    void forget(const QString& /*identifier*/) override {}
    [[nodiscard]] std::optional<TelevisionQuestion> question() const override { return {}; }
    void answer(const QString& /*secret*/) override {}
    void dismiss() override {}
    [[nodiscard]] QString outcome() const override { return {}; }
};

/// The application over a scripted system.
class Windows : public testing::Test, public ApplicationWorld {
  protected:
    class OneWindow : public WindowWorld {
      public:
        ScriptedContext context;
        NoTelevisions none;
        [[nodiscard]] OutputContext* outputContext() override { return &context; }
        [[nodiscard]] Televisions& televisions() override { return none; }
        bool answers = true;
        void finish(std::function<void()> done) override {
            if (answers) done();
        }
    };
    bool televisionsAnswer = true;

    [[nodiscard]] World& world() override { return story.world; }
    [[nodiscard]] std::unique_ptr<WindowWorld> makeWindowWorld() override {
        auto window = std::make_unique<OneWindow>();
        window->context.device = story.context.device;
        window->answers = televisionsAnswer;
        return window;
    }
    [[nodiscard]] std::unique_ptr<QQuickItem> makeLivePicture(Player& /*player*/) override { return {}; }

    [[nodiscard]] QStringList titles() const {
        QStringList titles;
        for (const auto& window : app.windows()) titles << window->window().title();
        return titles;
    }
    [[nodiscard]] QQuickWindow& window(size_t number) { return app.windows().at(number)->window(); }
    void press(QQuickWindow& target, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        target.requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&target));
        QTest::keyClick(&target, key, modifiers);
        QCoreApplication::processEvents();
    }

    Story story;
    NoSource source;
    MapPreferences preferences;
    Updater updater{{.version = u"0.0.0"_s}, source, preferences};
    VelmoraApp app{*this, updater, QDBusConnection::sessionBus()};
};

TEST_F(Windows, AStartWithThreeMoviesOpensThreeWindowsAndLaterOnesTheirOwn) {
    const QUrl second = story.addFile(u"Second.mkv"_s);
    const QUrl third = story.addFile(u"In a folder/Third.mkv"_s);
    const QUrl folder = QUrl::fromLocalFile(story.folder.filePath(u"In a folder"_s));
    app.take({open, {story.movie, second, folder}});
    QStringList all = titles();
    all.sort();
    EXPECT_EQ(all, (QStringList{u"Film"_s, u"Second"_s, u"Third"_s}));
    EXPECT_EQ(window(0).size(), QSize(640, 460));
    EXPECT_EQ(window(0).minimumSize(), QSize(520, 400));
    EXPECT_TRUE(window(0).isVisible());

    for (const QUrl& again : {story.movie, folder, third, second}) app.take({open, {again}});
    EXPECT_EQ(app.windows().size(), 3) << "they are shown already";
    EXPECT_EQ(app.currentWindow()->window().title(), u"Second"_s) << "and come forward";
    app.take({activate});
    EXPECT_EQ(app.windows().size(), 3);
    app.take({newWindow});
    EXPECT_EQ(app.windows().size(), 4);
    EXPECT_EQ(window(3).title(), u"Velmora"_s);

    MovieWindow& dropped = *app.windows().at(0);
    EXPECT_FALSE(dropped.movie()->drop({}));
    EXPECT_TRUE(dropped.movie()->drop({story.addFile(u"Dropped.mkv"_s), second}));
    EXPECT_EQ(dropped.window().title(), u"Dropped"_s);
    app.take({open, {story.movie}});
    EXPECT_EQ(app.windows().size(), 5) << "the window that was opened for it shows another one now";
}

TEST_F(Windows, GoesOnWithoutWindows) {
    app.take({activate});
    ASSERT_EQ(app.windows().size(), 1);
    press(window(0), Qt::Key_W, Qt::ControlModifier);
    QCoreApplication::processEvents();
    ASSERT_TRUE(app.windows().empty());
    EXPECT_FALSE(QGuiApplication::quitOnLastWindowClosed());

    app.take({open, {story.movie}});
    EXPECT_EQ(titles(), QStringList{u"Film"_s}) << "not behind an empty window";
    app.windows().at(0)->close();
    QCoreApplication::processEvents();

    app.take({chooseMovie});
    ASSERT_TRUE(story.desktop.dialog);
    story.desktop.picked(std::nullopt);
    EXPECT_TRUE(app.windows().empty());
    app.take({chooseMovie});
    story.desktop.picked(story.movie);
    EXPECT_EQ(titles(), QStringList{u"Film"_s});
    press(window(0), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(app.windows().empty());
}

TEST_F(Windows, QuittingWaitsForATelevisionUntilItIsAskedForAgain) {
    televisionsAnswer = false;
    app.take({open, {story.movie}});
    const int synchronized = story.preferences.synchronized;
    QTimer::singleShot(0, &app, [this] { app.run(Command::quit, nullptr); });
    QTimer::singleShot(300, &app, [&] {
        EXPECT_TRUE(app.windows().empty()) << "no longer in the way";
        EXPECT_GT(story.preferences.synchronized, synchronized) << "the place is safe, whatever comes";
        app.take({open, {story.movie}});
        EXPECT_TRUE(app.windows().empty());
        app.take({LaunchRequest::Action::quit});
    });
    QTimer::singleShot(5000, &app, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(Windows, MediaKeysSteerTheMovieOnTheTelevision) {
    if (!PrivateBus::isRunning()) GTEST_SKIP() << "There is no dbus-daemon.";
    story.session.reset();
    story.context.choose(u"Den"_s);
    app.take({open, {story.movie}});
    story.run(1);
    Session& session = app.windows().at(0)->session();
    const size_t player = story.stage.players.size() + 1;
    story.stage.takenAfter = {{static_cast<int>(player), 1}};
    story.finishPreparing();
    story.run(20);
    ASSERT_TRUE(session.isPlaying() && session.isOnAppleTV());

    const auto ask = [](const QString& interface, const QString& method, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            u"org.mpris.MediaPlayer2.velmora"_s, u"/org/mpris/MediaPlayer2"_s, interface, method);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message, QDBus::BlockWithGui, 5000);
    };
    const auto property = [&](const QString& name) {
        const QDBusMessage reply =
            ask(u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {u"org.mpris.MediaPlayer2.Player"_s, name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    };
    const auto tell = [&](const QString& method, const QVariantList& arguments = {}) {
        ask(u"org.mpris.MediaPlayer2.Player"_s, method, arguments);
        story.run(1);
    };
    EXPECT_EQ(property(u"PlaybackStatus"_s), u"Playing"_s);
    EXPECT_EQ(qdbus_cast<QVariantMap>(property(u"Metadata"_s))[u"mpris:length"_s].toLongLong(),
              5'400'000'000);
    tell(u"PlayPause"_s);
    EXPECT_FALSE(session.isPlaying());
    EXPECT_EQ(property(u"PlaybackStatus"_s), u"Paused"_s);
    const double before = session.currentTime();
    tell(u"Seek"_s, {qlonglong(60'000'000)});
    EXPECT_NEAR(session.currentTime(), before + 60, 0.1);
    EXPECT_NEAR(property(u"Position"_s).toDouble(), session.currentTime() * 1e6, 1);
    tell(u"Play"_s);
    EXPECT_TRUE(session.isPlaying());
    ASSERT_TRUE(session.isOnAppleTV());
    app.windows().at(0)->close();
    QCoreApplication::processEvents();
    EXPECT_TRUE(app.windows().empty());
    EXPECT_EQ(story.stage.alive(), 0) << "nothing plays on";
}

}  // namespace
}  // namespace velmora::test
