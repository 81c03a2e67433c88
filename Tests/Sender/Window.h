#pragma once

#include "Sender/Boxes.h"
#include "Sender/CredentialStore.h"
#include "Sender/MediaServer.h"
#include "Sender/RemotePlayback.h"
#include "Support/VirtualClock.h"
#include "Support/WaitFor.h"
#include "Television/Television.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace velmora::test {

constexpr double movieSeconds = 90;

/// The frame of a movie: what a television needs to know how long it is.
inline QByteArray movie(bool indexFirst) {
    using Boxes::box;
    QByteArray header(100, '\0');
    qToBigEndian(quint32(1000), header.data() + 12);
    qToBigEndian(quint32(movieSeconds * 1000), header.data() + 16);
    const QByteArray index = box("moov", box("mvhd", header) + box("udta", QByteArray(3000, 'u')));
    const QByteArray media = box("mdat", QByteArray(9'000'000, 'm'));
    return box("ftyp", "isom") + (indexFirst ? index + media : media + index);
}

/// One window on a television.
class Window {
  public:
    using Phase = RemotePlayback::Phase;

    Window(Clock& clock, MediaServer& server, const ReceiverMemory& memory = {})
        : playback(clock, server, memory) {
        QObject::connect(&playback, &RemotePlayback::stateChanged, [this] {
            const Phase now = playback.state().phase;
            if (phases.empty() || phases.back() != now) phases.push_back(now);
        });
    }
    /// The last that was announced.
    [[nodiscard]] Phase phase() const { return phases.empty() ? Phase::idle : phases.back(); }
    [[nodiscard]] bool reaches(Phase wanted) {
        return waitFor([&] { return phase() == wanted; });
    }

    RemotePlayback playback;
    std::vector<Phase> phases;
};

/// One window and its television, whose PIN is typed as soon as it is shown.
class Pair {
  public:
    using Phase = RemotePlayback::Phase;

    Pair(Clock& clock, MediaServer& server, const TelevisionOptions& options)
        : television(clock, options), window(std::make_unique<Window>(clock, server)) {
        EXPECT_TRUE(television.listen());
        QObject::connect(&playback, &RemotePlayback::stateChanged, [this] {
            if (playback.state().phase == Phase::needsPin) playback.supply(television.pin());
        });
    }
    [[nodiscard]] Phase phase() const { return window->phase(); }
    [[nodiscard]] double shown() { return television.player().position(); }
    [[nodiscard]] bool isPlayingBehind(double seconds) {
        return phase() == Phase::playing && television.showsPicture() && shown() > seconds;
    }
    [[nodiscard]] std::string story() const {
        const QString reason = window ? playback.state().reason : QString();
        const QString complaints = television.complaints().join(QStringLiteral("; "));
        return (reason + QStringLiteral(" | ") + complaints).toStdString();
    }

    Television television;
    std::unique_ptr<Window> window;
    RemotePlayback& playback = window->playback;
};

/// Time that runs faster than it does for a viewer, and movies to play in it.
class WindowTest : public testing::Test {
  protected:
    WindowTest() {
        write(QStringLiteral("movie.mp4"), movie(true));
        write(QStringLiteral("late.mp4"), movie(false));
        write(QStringLiteral("garbage.mp4"), QByteArray(50'000, 'x'));
    }
    /// What the windows left waiting ends before the clock and the server do.
    ~WindowTest() override { QCoreApplication::processEvents(); }
    void write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] RemotePlayback::Item item(double start = 0,
                                            const QString& name = QStringLiteral("movie.mp4")) const {
        return {.file = folder_.filePath(name), .duration = movieSeconds, .startPosition = start};
    }

    QTemporaryDir folder_;
    FastClock clock_{10};
    std::unique_ptr<MediaServer> server_ = std::move(MediaServer::start().value());
};

}  // namespace velmora::test
