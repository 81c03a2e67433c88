// Plays one movie on a receiver and tells when its media server was first asked and when the picture moved,
// in milliseconds since the order to play, for the benchmark of the time to play.
#include "Sender/ControlFactory.h"
#include "Sender/MediaServer.h"
#include "Sender/NegotiatedControl.h"
#include "Sender/RemotePlayback.h"

#include <QCoreApplication>
#include <QTextStream>

#include <chrono>
#include <optional>

using namespace velmora;

namespace {

using Instant = std::chrono::steady_clock::time_point;

/// The sender as the program uses it, with a look at what it publishes.
RemotePlayback::World watchedWorld(Clock& clock, MediaServer& server, MediaServer::Publication*& published) {
    const auto make = [&clock](const Approach& approach, std::shared_ptr<Access> access) {
        return makeControl(clock, approach, std::move(access));
    };
    const auto publish = [&](const QString& path, const QHostAddress& receiver, const TrackChoice& tracks) {
        auto publication = server.publish(path, receiver, tracks);
        if (publication) published = publication->get();
        return publication;
    };
    return {.control = [&clock, make](const Receiver& receiver) -> std::shared_ptr<VideoControl> {
                return NegotiatedControl::make(clock, receiver, {}, make);
            },
            .publish = publish,
            .mediaPort = server.port()};
}

double milliseconds(Instant from, Instant to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QTextStream errors(stderr);
    const auto receiver =
        arguments.size() == 4 ? Receiver::fromText(arguments.at(1)) : std::unexpected(QString());
    if (!receiver) {
        errors << "usage: benchmark-play-movie HOST:PORT FILE DURATION\n";
        return 2;
    }
    SystemClock clock;
    const auto server = MediaServer::start();
    if (!server) {
        errors << server.error() << '\n';
        return 1;
    }
    MediaServer::Publication* published = nullptr;
    RemotePlayback playback(clock, watchedWorld(clock, **server, published));
    Instant ordered;
    bool hasPlayed = false;
    QObject::connect(&playback, &RemotePlayback::stateChanged, &application, [&] {
        const RemotePlayback::State state = playback.state();
        if (state.phase == RemotePlayback::Phase::playing && !hasPlayed) {
            hasPlayed = true;
            const Instant requested = published->activity().firstRequest.value_or(ordered);
            QTextStream(stdout) << milliseconds(ordered, requested) << ' '
                                << milliseconds(ordered, std::chrono::steady_clock::now()) << Qt::endl;
            playback.stop();
        } else if (state.isOver()) {
            if (!hasPlayed) errors << state.reason << '\n';
            QCoreApplication::exit(hasPlayed ? 0 : 1);
        }
    });
    ordered = std::chrono::steady_clock::now();
    playback.play(*receiver, {arguments.at(2), arguments.at(3).toDouble(), 0});
    return QCoreApplication::exec();
}
