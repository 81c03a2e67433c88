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

const QCommandLineOption nameOption(u"name"_s, u"What it is called."_s, u"NAME"_s, u"Television"_s);
const QCommandLineOption addressOption(u"address"_s, u"The address to listen on (127.0.0.1)."_s, u"ADDRESS"_s,
                                       u"127.0.0.1"_s);
const QCommandLineOption portOption(u"port"_s, u"The port to listen on (any that is free)."_s, u"PORT"_s,
                                    u"0"_s);
const QCommandLineOption misbehaveOption(u"misbehave"_s, u"Get something wrong; may be repeated."_s,
                                         u"KIND"_s);
const QCommandLineOption flavourOption(
    u"flavour"_s, u"plain, password, legacy-keys, legacy-pin, transient or paired (plain)."_s, u"FLAVOUR"_s,
    u"plain"_s);
const QCommandLineOption handoverOption(
    u"handover"_s, u"How it takes movies in an encrypted session: play or queue (play)."_s, u"HANDOVER"_s,
    u"play"_s);
const QCommandLineOption pinOption(u"pin"_s, u"The PIN that it shows (1234)."_s, u"PIN"_s, u"1234"_s);
const QCommandLineOption passwordOption(u"password"_s, u"Ask for this password."_s, u"PASSWORD"_s);
const QCommandLineOption modelOption(u"model"_s, u"Its model, such as AppleTV14,1."_s, u"MODEL"_s);
const QCommandLineOption versionOption(u"os-version"_s, u"The version of its system."_s, u"VERSION"_s);
const QCommandLineOption publishOption(u"publish"_s, u"Announce it on the network, through Avahi."_s);
const QCommandLineOption busOption(u"bus"_s, u"The message bus with Avahi on it (the system's)."_s,
                                   u"ADDRESS"_s);
const QCommandLineOption durationOption(u"duration"_s, u"End after so many seconds."_s, u"SECONDS"_s, u"0"_s);

std::expected<Television::Options, QString> optionsFrom(const QCommandLineParser& parser) {
    Television::Options options;
    options.name = parser.value(nameOption);
    if (!options.address.setAddress(parser.value(addressOption)))
        return std::unexpected(u"“%1” is not an address."_s.arg(parser.value(addressOption)));
    bool isPort = false;
    options.port = parser.value(portOption).toUShort(&isPort);
    if (!isPort) return std::unexpected(u"“%1” is not a port."_s.arg(parser.value(portOption)));
    const auto flavour = Television::Options::readFlavour(parser.value(flavourOption));
    if (!flavour) return std::unexpected(u"There is no flavour “%1”."_s.arg(parser.value(flavourOption)));
    options.flavour = *flavour;
    const auto handover = Television::Options::readHandover(parser.value(handoverOption));
    if (!handover) return std::unexpected(u"There is no handover “%1”."_s.arg(parser.value(handoverOption)));
    options.handover = *handover;
    options.pin = parser.value(pinOption);
    options.password = parser.value(passwordOption);
    options.model = parser.value(modelOption);
    options.systemVersion = parser.value(versionOption);
    options.publish = parser.isSet(publishOption);
    options.busAddress = parser.value(busOption);
    for (const QString& text : parser.values(misbehaveOption)) {
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
    parser.addOptions({nameOption, addressOption, portOption, flavourOption, handoverOption, pinOption,
                       passwordOption, modelOption, versionOption, publishOption, busOption, misbehaveOption,
                       durationOption});
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
    if (const double duration = parser.value(durationOption).toDouble(); duration > 0)
        ending = clock.after(seconds(duration), [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
