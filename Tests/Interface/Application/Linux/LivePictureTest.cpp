// The player's pictures in a window, as they can be seen there. The program starts itself again on a screen,
// to draw the same with OpenGL, and with two pixels for each.
#include "Interface/Application/Linux/LivePicture.h"
#include "Support/WaitFor.h"

#include <QGuiApplication>
#include <QProcess>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

constexpr QSize movieSize(800, 448);

bool isOnScreen() {
    return qEnvironmentVariable("QT_QPA_PLATFORM") != u"offscreen"_s;
}

/// A movie of four plain fields that stay; the last one may be stripes of one pixel.
QString makeMovie(const QTemporaryDir& folder, const QString& name, const QStringList& fields) {
    QStringList arguments{u"-v"_s, u"error"_s};
    for (const QString& field : fields)
        arguments << u"-f"_s << u"lavfi"_s << u"-i"_s << u"color=%1:s=400x224:r=24:d=6"_s.arg(field);
    const QString file = folder.filePath(name);
    arguments << u"-filter_complex"_s
              << u"[3]format=gray,geq=lum='255*mod(X,2)',format=yuv420p[s];[0][1]hstack[t];[2][s]hstack[b];"
                 u"[t][b]vstack,format=yuv420p"_s
              << u"-c:v"_s << u"libx264"_s << u"-preset"_s << u"ultrafast"_s << u"-qp"_s << u"1"_s << file;
    EXPECT_EQ(QProcess::execute(u"ffmpeg"_s, arguments), 0);
    return file;
}

class LivePictureTest : public testing::Test {
  protected:
    /// A window with the picture of one player, as large as the movie in the screen's pixels.
    struct Shown {
        MpvPlayer player{{.isMute = true, .hardwareDecoding = u"no"_s}};
        QQuickWindow window;
        std::unique_ptr<LivePicture> picture;
        LivePicture::OpenGl openGl = LivePicture::OpenGl::always;
        int frames = 0;

        Shown() {
            window.setColor(Qt::white);
            const double scale = window.devicePixelRatio();
            window.resize(static_cast<int>(movieSize.width() / scale),
                          static_cast<int>(movieSize.height() / scale));
            QObject::connect(&window, &QQuickWindow::frameSwapped, &player, [this] { ++frames; });
            window.show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        }
        void show(MpvPlayer& shown) {
            picture.reset();
            picture = std::make_unique<LivePicture>(shown, openGl);
            picture->setParentItem(window.contentItem());
            picture->setSize(window.size());
        }
    };

    static void SetUpTestSuite() {
        folder = std::make_unique<QTemporaryDir>();
        first = makeMovie(*folder, u"first.mkv"_s, {u"red"_s, u"blue"_s, u"lime"_s, u"black"_s});
        second = makeMovie(*folder, u"second.mkv"_s, {u"yellow"_s, u"lime"_s, u"blue"_s, u"black"_s});
    }
    static void TearDownTestSuite() { folder.reset(); }

    void SetUp() override {
        if (!isOnScreen()) return;
        QQuickWindow window;
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        if (window.rendererInterface()->graphicsApi() != QSGRendererInterface::OpenGL)
            GTEST_SKIP() << "There is no OpenGL.";
    }

    static bool isNear(QColor seen, QColor expected) {
        return std::abs(seen.red() - expected.red()) < 24 && std::abs(seen.green() - expected.green()) < 24 &&
               std::abs(seen.blue() - expected.blue()) < 24;
    }
    /// Places are parts of the window.
    static bool has(Shown& shown, double x, double y, QColor color) {
        const QImage seen = shown.window.grabWindow();
        return isNear(seen.pixelColor(static_cast<int>(x * (seen.width() - 1)),
                                      static_cast<int>(y * (seen.height() - 1))),
                      color);
    }
    /// The three fields of one colour, from the upper left one.
    static bool hasFields(Shown& shown, QColor left, QColor right, QColor below) {
        return has(shown, 0.25, 0.25, left) && has(shown, 0.75, 0.25, right) && has(shown, 0.25, 0.75, below);
    }
    static bool showsFirst(Shown& shown) { return hasFields(shown, Qt::red, Qt::blue, Qt::green); }
    static bool showsSecond(Shown& shown) { return hasFields(shown, Qt::yellow, Qt::green, Qt::blue); }

    static inline std::unique_ptr<QTemporaryDir> folder;
    static inline QString first;
    static inline QString second;
};

TEST_F(LivePictureTest, IsWholeAndSharpWithRoundCorners) {
    Shown shown;
    shown.show(shown.player);
    shown.player.load(first);
    ASSERT_TRUE(waitFor([&] { return showsFirst(shown); }));
    EXPECT_TRUE(waitFor([&] {
        return QSizeF(shown.picture->implicitWidth(), shown.picture->implicitHeight()) == movieSize;
    }));

    const QImage seen = shown.window.grabWindow();
    ASSERT_EQ(seen.size(), movieSize);
    for (const QPoint place : {QPoint(1, 1), {798, 1}, {1, 446}, {798, 446}})
        EXPECT_TRUE(isNear(seen.pixelColor(place), Qt::white)) << place.x() << ' ' << place.y();
    const int inside = static_cast<int>(LivePicture::radius * shown.window.devicePixelRatio()) / 2;
    EXPECT_TRUE(isNear(seen.pixelColor(inside, inside), Qt::red));
    EXPECT_TRUE(isNear(seen.pixelColor(799 - inside, inside), Qt::blue));
    int sharp = 0;
    for (int x = 450; x < 750; ++x)
        sharp += std::abs(seen.pixelColor(x, 300).red() - seen.pixelColor(x + 1, 300).red()) > 150 ? 1 : 0;
    EXPECT_GT(sharp, 290);

    // A place of another shape, while nothing moves: the picture keeps its own.
    shown.picture->setHeight(shown.picture->height() / 2);
    EXPECT_TRUE(waitFor([&] { return has(shown, 0.3, 0.12, Qt::red) && has(shown, 0.7, 0.12, Qt::blue); }));
    EXPECT_TRUE(has(shown, 0.2, 0.12, Qt::white) && has(shown, 0.8, 0.12, Qt::white));
}

TEST_F(LivePictureTest, FollowsPlayersAndWindows) {
    auto shown = std::make_unique<Shown>();
    Shown other;
    shown->show(shown->player);
    other.show(other.player);
    shown->player.load(first);
    other.player.load(second);
    EXPECT_TRUE(waitFor([&] { return showsFirst(*shown) && showsSecond(other); }));

    // Another player, with a file already, while the one before it plays.
    shown->player.setPaused(false);
    auto fresh = std::make_unique<MpvPlayer>(MpvPlayer::Options{.isMute = true, .hardwareDecoding = u"no"_s});
    fresh->load(second);
    ASSERT_TRUE(waitFor([&] { return fresh->isReady(); }));
    shown->show(*fresh);
    EXPECT_TRUE(waitFor([&] { return showsSecond(*shown); }));
    // With whatever is quickest here.
    shown->openGl = LivePicture::OpenGl::withGraphicsProcessor;
    shown->show(shown->player);
    EXPECT_TRUE(waitFor([&] { return showsFirst(*shown); }));
    shown->show(*fresh);

    // The window goes and comes, with and without what it is drawn with, and while the movie plays.
    fresh->setPaused(false);
    for (const bool isPersistent : {true, false}) {
        shown->window.setPersistentGraphics(isPersistent);
        shown->window.setPersistentSceneGraph(isPersistent);
        shown->window.hide();
        QCoreApplication::processEvents();
        shown->window.releaseResources();
        shown->window.show();
        EXPECT_TRUE(waitFor([&] { return showsSecond(*shown); })) << isPersistent;
    }
    fresh.reset();  // before its picture
    shown->window.close();
    QCoreApplication::processEvents();
    shown.reset();
    EXPECT_TRUE(showsSecond(other));
}

TEST_F(LivePictureTest, DrawsNothingWhileNothingMoves) {
    Shown shown;
    shown.show(shown.player);
    shown.player.load(first);
    ASSERT_TRUE(waitFor([&] { return showsFirst(shown); }));
    shown.player.setPaused(false);
    int before = shown.frames;
    EXPECT_TRUE(waitFor([&] { return shown.frames > before + 12; }));
    shown.player.setPaused(true);
    // What was on its way when it was paused.
    static_cast<void>(waitFor([] { return false; }, 1));
    before = shown.frames;
    EXPECT_FALSE(waitFor([&] { return shown.frames > before; }, 1));
}

TEST(LivePictureScreens, AreAllTheSame) {
    const QString display = qEnvironmentVariable("DISPLAY");
    const QString server = QStandardPaths::findExecutable(u"xvfb-run"_s);
    bool hasScreen = !display.isEmpty() || !server.isEmpty();
    for (const auto& [platform, scale] :
         {std::pair(u"offscreen"_s, u"2"_s), {u"xcb"_s, u"1"_s}, {u"xcb"_s, u"2"_s}}) {
        if (platform == u"xcb"_s && !hasScreen) continue;
        QProcess again;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_QPA_PLATFORM"_s, platform);
        environment.insert(u"QT_SCALE_FACTOR"_s, scale);
        again.setProcessEnvironment(environment);
        again.setProcessChannelMode(QProcess::MergedChannels);
        QStringList command{QCoreApplication::applicationFilePath(), u"--gtest_filter=LivePictureTest.*"_s};
        if (platform == u"xcb"_s && display.isEmpty())
            command = QStringList{server, u"-a"_s, u"-s"_s, u"-screen 0 1280x900x24"_s} + command;
        again.start(command.takeFirst(), command);
        EXPECT_TRUE(again.waitForFinished(100'000));
        const QByteArray said = again.readAll();
        EXPECT_EQ(again.exitCode(), 0) << platform.toStdString() << scale.toStdString() << said.toStdString();
        hasScreen = hasScreen && !said.contains("There is no OpenGL.");
    }
    if (!hasScreen) GTEST_SKIP() << "There is no screen with OpenGL.";
}

}  // namespace
}  // namespace velmora::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
