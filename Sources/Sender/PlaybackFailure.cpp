#include "Sender/PlaybackFailure.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace velmora::PlaybackFailure {

namespace {

QString place(const Receiver& receiver) {
    QString host = receiver.address.isNull() ? receiver.host : receiver.address.toString();
    if (host.contains(u':')) host = u"[%1]"_s.arg(host);
    return u"%1:%2"_s.arg(host).arg(receiver.port);
}

QString refusedWithStatus(int status) {
    switch (status) {
        case 401:
            return u"The television wants a password before it plays."_s;
        case 403:
        case 470:
            return u"The television does not let this computer play. In its AirPlay settings, allow access for everyone on the network."_s;
        case 404:
            return u"This television does not take movies by address (it may only take mirroring)."_s;
        case 409:
        case 453:
        case 503:
            return u"The television is busy with another device."_s;
        case 500:
            return u"The television reports trouble of its own (500). Switching it off and on may help."_s;
        default:
            return u"The television refuses the movie (%1)."_s.arg(status);
    }
}

QString ofFault(const PlaybackFault& fault) {
    constexpr qint64 displayCannot[] = {-11848, -11868};
    constexpr qint64 notFound[] = {-12938, -17221};
    const auto isOneOf = [&fault](const auto& codes) {
        return std::ranges::find(codes, fault.code) != std::end(codes);
    };
    if (isOneOf(displayCannot))
        return u"The television cannot show this kind of picture on its screen (%1)."_s.arg(fault.code);
    if (isOneOf(notFound)) return u"The television could not load the movie (%1)."_s.arg(fault.code);
    return u"The television does not play this movie (%1)."_s.arg(fault.code);
}

}  // namespace

QString unreachable(const Receiver& receiver, const ConnectionError& error) {
    using Kind = ConnectionError::Kind;
    if (!error.explanation.isEmpty()) return error.explanation;
    switch (error.kind) {
        case Kind::timeout:
            return u"The television at %1 does not answer."_s.arg(place(receiver));
        case Kind::refused:
            return u"Nothing takes AirPlay at %1. Is AirPlay switched on there, and is the port right?"_s.arg(
                place(receiver));
        case Kind::unreachable:
            return u"There is no way to %1 from this computer's network."_s.arg(place(receiver));
        case Kind::closed:
            return u"The television at %1 broke off the connection."_s.arg(place(receiver));
        case Kind::malformed:
            return u"What answers at %1 does not speak AirPlay."_s.arg(place(receiver));
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
            return u"The television stopped answering."_s;
        case Kind::malformed:
            return u"The television sent an answer that makes no sense."_s;
        default:
            return u"The television broke off the connection before the movie began."_s;
    }
}

QString noPicture(const MediaServer::Activity& activity, quint16 mediaPort,
                  const std::optional<PlaybackFault>& fault, bool gaveUp) {
    if (fault) return ofFault(*fault);
    if (activity.requests == 0 && activity.refused > 0)
        return u"Something asked for the movie from another address than the television's, and was refused."_s;
    if (activity.requests == 0)
        return u"The television never asked for the movie. A firewall on this computer may be blocking port %1."_s
            .arg(mediaPort);
    if (!activity.readPastIndex)
        return u"The television fetched the beginning of the movie and stopped: it does not take this video."_s;
    if (gaveUp) return u"The television fetched the movie and gave up: it does not take this video."_s;
    return u"The television fetched the movie but showed no picture of it."_s;
}

QString wrongPassword() {
    return u"The television did not take this password."_s;
}

QString pinNotTaken() {
    return u"The television did not take the code. Type the one that it shows now."_s;
}

QString newPin() {
    return u"The television broke off the pairing. Type the code that it shows now."_s;
}

QString unusableAddress() {
    return u"The television is reachable only under a link-local IPv6 address, over which it cannot fetch a movie."_s;
}

QString dropped() {
    return u"The connection to the television was lost."_s;
}

QString stoppedThere() {
    return u"The movie was stopped at the television."_s;
}

QString takenOver() {
    return u"Another device took over the television."_s;
}

}  // namespace velmora::PlaybackFailure
