#include "Sender/PlaybackFailure.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace velmora::PlaybackFailure {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(PlaybackFailure)
};

QString place(const Receiver& receiver) {
    QString host = receiver.address.isNull() ? receiver.host : receiver.address.toString();
    if (host.contains(u':')) host = u"[%1]"_s.arg(host);
    return u"%1:%2"_s.arg(host).arg(receiver.port);
}

QString refusedWithStatus(int status) {
    switch (status) {
        case 401:
            return Texts::tr("The television wants a password before it plays.");
        case 403:
        case 470:
            return Texts::tr(
                "The television does not let this computer play. In its AirPlay settings, allow access for "
                "everyone on the network.");
        case 404:
            return Texts::tr("This television does not take movies by address (it may only take mirroring).");
        case 409:
        case 453:
        case 503:
            return Texts::tr("The television is busy with another device.");
        case 500:
            return Texts::tr(
                "The television reports trouble of its own (500). Switching it off and on may help.");
        default:
            return Texts::tr("The television refuses the movie (%1).").arg(status);
    }
}

QString ofFault(const PlaybackFault& fault) {
    constexpr qint64 displayCannot[] = {-11848, -11868};
    constexpr qint64 notFound[] = {-12938, -17221};
    const auto isOneOf = [&fault](const auto& codes) {
        return std::ranges::find(codes, fault.code) != std::end(codes);
    };
    if (isOneOf(displayCannot))
        return Texts::tr("The television cannot show this kind of picture on its screen (%1).")
            .arg(fault.code);
    if (isOneOf(notFound)) return Texts::tr("The television could not load the movie (%1).").arg(fault.code);
    return Texts::tr("The television does not play this movie (%1).").arg(fault.code);
}

}  // namespace

QString unreachable(const Receiver& receiver, const ConnectionError& error) {
    using Kind = ConnectionError::Kind;
    if (!error.explanation.isEmpty()) return error.explanation;
    switch (error.kind) {
        case Kind::timeout:
            return Texts::tr("The television at %1 does not answer.").arg(place(receiver));
        case Kind::refused:
            return Texts::tr(
                       "Nothing takes AirPlay at %1. Is AirPlay switched on there, and is the port right?")
                .arg(place(receiver));
        case Kind::unreachable:
            return Texts::tr("There is no way to %1 from this computer's network.").arg(place(receiver));
        case Kind::closed:
            return Texts::tr("The television at %1 broke off the connection.").arg(place(receiver));
        case Kind::malformed:
            return Texts::tr("What answers at %1 does not speak AirPlay.").arg(place(receiver));
        case Kind::status:
            return refusedWithStatus(error.status);
        case Kind::pairing:
            return explanation(error.pairing);
    }
    return {};
}

QString refused(const ConnectionError& error) {
    using Kind = ConnectionError::Kind;
    if (!error.explanation.isEmpty()) return error.explanation;
    switch (error.kind) {
        case Kind::status:
            return refusedWithStatus(error.status);
        case Kind::pairing:
            return explanation(error.pairing);
        case Kind::timeout:
            return Texts::tr("The television stopped answering.");
        case Kind::malformed:
            return Texts::tr("The television sent an answer that makes no sense.");
        default:
            return Texts::tr("The television broke off the connection before the movie began.");
    }
}

QString noPicture(const MediaServer::Activity& activity, quint16 mediaPort,
                  const std::optional<PlaybackFault>& fault, bool gaveUp) {
    if (fault) return ofFault(*fault);
    if (activity.requests == 0 && activity.refused > 0)
        return Texts::tr(
            "Something asked for the movie from another address than the television's, and was refused.");
    if (activity.requests == 0)
        return Texts::tr(
                   "The television never asked for the movie. A firewall on this computer may be blocking "
                   "port %1.")
            .arg(mediaPort);
    if (!activity.readPastIndex)
        return Texts::tr(
            "The television fetched the beginning of the movie and stopped: it does not take this video.");
    if (gaveUp)
        return Texts::tr("The television fetched the movie and gave up: it does not take this video.");
    return Texts::tr("The television fetched the movie but showed no picture of it.");
}

QString wrongPassword() {
    return Texts::tr("The television did not take this password.");
}

QString pinNotTaken() {
    return Texts::tr("The television did not take the code. Type the one that it shows now.");
}

QString newPin() {
    return Texts::tr("The television broke off the pairing. Type the code that it shows now.");
}

QString unusableAddress() {
    return Texts::tr(
        "The television is reachable only under a link-local IPv6 address, over which it cannot fetch a "
        "movie.");
}

QString dropped() {
    return Texts::tr("The connection to the television was lost.");
}

QString stoppedThere() {
    return Texts::tr("The movie was stopped at the television.");
}

QString takenOver() {
    return Texts::tr("Another device took over the television.");
}

}  // namespace velmora::PlaybackFailure
