#include "Television/Misbehaviour.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

struct Kind {
    Misbehaviour misbehaviour;
    const char* name;
    double number;
    const char* help;
};

constexpr std::array<Kind, 26> kinds{{
    {Misbehaviour::neverFetches, "never-fetch", 0,
     "takes the movie's address and does not ask for the movie"},
    {Misbehaviour::ignoresPlay, "ignore-play", 0, "takes a movie with 200 and does nothing"},
    {Misbehaviour::failsPlay, "fail-play", 2, "answers the first NUMBER of movies with 500"},
    {Misbehaviour::drops, "drop", 5, "closes every connection NUMBER seconds after /play"},
    {Misbehaviour::goesSilent, "silent", 5, "answers nothing any more, NUMBER seconds after /play"},
    {Misbehaviour::startsAtZero, "start-at-zero", 0, "ignores the start position"},
    {Misbehaviour::pausesItself, "pause", 3, "pauses after NUMBER seconds of picture"},
    {Misbehaviour::isStoppedThere, "stop", 3, "is stopped with its remote after NUMBER seconds of picture"},
    {Misbehaviour::liesInEvents, "lie", 0, "says playing in its events whatever happens"},
    {Misbehaviour::jumpsBack, "jump-back", 0, "shows positions before the start for two seconds"},
    {Misbehaviour::endsLinesBare, "bare-lf", 0, "ends its status lines with a bare LF"},
    {Misbehaviour::omitsLengths, "no-length", 0, "sends no Content-Length with empty answers"},
    {Misbehaviour::hidesDuration, "no-duration", 0, "is ready with a duration of zero, and stays so"},
    {Misbehaviour::wantsPin, "want-pin", 0, "pairs only with a PIN, whatever it announces"},
    {Misbehaviour::doubtsPin, "doubt-pin", 1, "answers the first NUMBER of right PINs with 470"},
    {Misbehaviour::restricted, "restrict", 0, "lets only people of its home in"},
    {Misbehaviour::isBusy, "busy", 0, "is busy with something else"},
    {Misbehaviour::isTakenOver, "take-over", 3,
     "is taken over by another sender after NUMBER seconds of picture"},
    {Misbehaviour::refusesPtp, "refuse-ptp", 0, "refuses sessions that are timed by PTP"},
    {Misbehaviour::refusesNtp, "refuse-ntp", 0, "refuses sessions that are timed by NTP"},
    {Misbehaviour::opensEventsLate, "late-events", 1, "opens its port for events NUMBER seconds late"},
    {Misbehaviour::hidesInfo, "no-info", 0, "answers /info with 403"},
    {Misbehaviour::asksConsent, "consent", 10, "answers the session's SETUP after NUMBER seconds"},
    {Misbehaviour::mutesRemote, "mute-remote", 0,
     "says nothing to its remote control; with 1, refuses its commands"},
    {Misbehaviour::sleeps, "asleep", 0, "is asleep until it is woken"},
    {Misbehaviour::ends, "end", 1,
     "the queue's end: 1 as a notification, 2 as stopped and ended, 3 as stopped a little early"},
}};

}  // namespace

std::expected<std::pair<Misbehaviour, double>, QString> readMisbehaviour(const QString& text) {
    const QString name = text.section('='_L1, 0, 0);
    const auto kind =
        std::ranges::find_if(kinds, [&](const Kind& k) { return name == QLatin1StringView(k.name); });
    if (kind == kinds.end()) return std::unexpected(u"There is no misbehaviour “%1”."_s.arg(name));
    if (name.size() == text.size()) return std::pair(kind->misbehaviour, kind->number);
    bool isNumber = false;
    const double number = text.sliced(name.size() + 1).toDouble(&isNumber);
    if (!isNumber || number < 0) return std::unexpected(u"“%1” needs a number after its sign."_s.arg(text));
    return std::pair(kind->misbehaviour, number);
}

QString misbehaviourHelp() {
    QString help;
    for (const Kind& kind : kinds) {
        const QString name = QLatin1StringView(kind.name) + (kind.number > 0 ? u"[=NUMBER]"_s : QString());
        help += u"  %1 %2\n"_s.arg(name, -22).arg(QLatin1StringView(kind.help));
    }
    return help;
}

}  // namespace velmora::test
