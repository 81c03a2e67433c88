// A television for trying out Velmora without one: it fetches and "plays" movies on this computer, and says
// on standard output what it would show.
#include "Support/Seconds.h"
#include "Television/Television.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <sys/prctl.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace velmora;
using namespace velmora::test;

namespace {

constexpr int usageError = 2;

const QList<QCommandLineOption> commandLine{
    {u"name"_s, u"What it is called."_s, u"NAME"_s, u"Television"_s},
    {u"address"_s, u"The address to listen on (127.0.0.1)."_s, u"ADDRESS"_s, u"127.0.0.1"_s},
    {u"port"_s, u"The port to listen on (any that is free)."_s, u"PORT"_s, u"0"_s},
    {u"flavour"_s, u"plain, password, legacy-keys, legacy-pin, transient or paired (plain)."_s, u"FLAVOUR"_s,
     u"plain"_s},
    {u"handover"_s, u"How it takes movies in an encrypted session: play or queue (play)."_s, u"HANDOVER"_s,
     u"play"_s},
    {u"pin"_s, u"The PIN that it shows (1234)."_s, u"PIN"_s, u"1234"_s},
    {u"password"_s, u"Ask for this password."_s, u"PASSWORD"_s},
    {u"model"_s, u"Its model, such as AppleTV14,1."_s, u"MODEL"_s},
    {u"os-version"_s, u"The version of its system."_s, u"VERSION"_s},
    {u"publish"_s, u"Announce it on the network, through Avahi."_s},
    {u"bus"_s, u"The message bus with Avahi on it (the system's)."_s, u"ADDRESS"_s},
    {u"misbehave"_s, u"Get something wrong; may be repeated."_s, u"KIND"_s},
    {u"duration"_s, u"End after so many seconds."_s, u"SECONDS"_s, u"0"_s},
};

std::expected<Television::Options, QString> optionsFrom(const QCommandLineParser& parser) {
    Television::Options options;
    options.name = parser.value(u"name"_s);
    if (!options.address.setAddress(parser.value(u"address"_s)))
        return std::unexpected(u"“%1” is not an address."_s.arg(parser.value(u"address"_s)));
    bool isPort = false;
    options.port = parser.value(u"port"_s).toUShort(&isPort);
    if (!isPort) return std::unexpected(u"“%1” is not a port."_s.arg(parser.value(u"port"_s)));
    const auto flavour = Television::Options::readFlavour(parser.value(u"flavour"_s));
    if (!flavour) return std::unexpected(u"There is no flavour “%1”."_s.arg(parser.value(u"flavour"_s)));
    options.flavour = *flavour;
    const auto handover = Television::Options::readHandover(parser.value(u"handover"_s));
    if (!handover) return std::unexpected(u"There is no handover “%1”."_s.arg(parser.value(u"handover"_s)));
    options.handover = *handover;
    options.pin = parser.value(u"pin"_s);
    options.password = parser.value(u"password"_s);
    options.model = parser.value(u"model"_s);
    options.systemVersion = parser.value(u"os-version"_s);
    options.publish = parser.isSet(u"publish"_s);
    options.busAddress = parser.value(u"bus"_s);
    for (const QString& text : parser.values(u"misbehave"_s)) {
        const auto misbehaviour = readMisbehaviour(text);
        if (!misbehaviour) return std::unexpected(misbehaviour.error());
        options.misbehaviours.insert(misbehaviour->first, misbehaviour->second);
    }
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // whoever started it may be killed and could not end it then
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"A television on this computer, for trying out Velmora.\n\nKinds of "
        "misbehaviour:\n"_s +
        misbehaviourHelp());
    parser.addHelpOption();
    parser.addOptions(commandLine);
    parser.process(application);

    QTextStream errors(stderr);
    QTextStream output(stdout);
    const auto options = optionsFrom(parser);
    if (!options) {
        errors << options.error() << Qt::endl;
        return usageError;
    }
    SystemClock clock;
    Television television(clock, *options);
    QObject::connect(&television, &Television::said,
                     [&](const QString& line) { output << line << Qt::endl; });
    if (const auto listening = television.listen(); !listening) {
        errors << listening.error() << Qt::endl;
        return 1;
    }
    output << "listening on " << television.receiver().port << Qt::endl;
    Clock::Timer ending;
    if (const double duration = parser.value(u"duration"_s).toDouble(); duration > 0)
        ending = clock.after(seconds(duration), [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
