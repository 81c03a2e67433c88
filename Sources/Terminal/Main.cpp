// velmora-cast: Velmora without a window.
#include "Diagnostics/Log.h"
#include "Platform/Linux/SettingsFile.h"
#include "Sender/CredentialStore.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Terminal/Casting.h"
#include "Terminal/CommandLine.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/ForgetRun.h"
#include "Terminal/ListRun.h"
#include "Terminal/PrepareRun.h"
#include "Terminal/Signals.h"
#include "Terminal/Terminal.h"

#include <QCoreApplication>

#include <langinfo.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace Qt::StringLiterals;
using namespace velmora;

/// Qt's own remarks are for the developer, not for the user's terminal.
void logRemark(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtDebugMsg || type == QtInfoMsg)
        logger().notice(message);
    else
        logger().error(message);
}

bool hasUnicodeTerminal() {
    std::setlocale(LC_ALL, "");
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

int print(const QString& text) {
    const bool written = std::fputs(qPrintable(text), stdout) >= 0 && std::fflush(stdout) == 0;
    return written ? doneStatus : failedStatus;
}

int explainUsage(const QString& problem) {
    std::fprintf(stderr, "velmora-cast: %s\nTry 'velmora-cast --help'.\n", qPrintable(problem));
    return usageStatus;
}

/// Runs a `Casting` or a `PrepareRun` to its end.
template <typename Run>
int complete(Run& run, Terminal& terminal) {
    const Signals signalsOfProcess;
    QObject::connect(&signalsOfProcess, &Signals::interrupted, &run, &Run::interrupt);
    QObject::connect(&signalsOfProcess, &Signals::suspending, &terminal, &Terminal::suspend);
    QObject::connect(&signalsOfProcess, &Signals::resumed, &terminal, &Terminal::resume);
    QObject::connect(&signalsOfProcess, &Signals::resized, &run, &Run::redraw);
    QObject::connect(&run, &Run::finished, qApp, &QCoreApplication::exit, Qt::QueuedConnection);
    QMetaObject::invokeMethod(&run, &Run::start, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

int act(const CommandLine& line, bool drawsBlocks) {
    if (line.action == CommandLine::Action::help) return print(CommandLine::help());
    if (line.action == CommandLine::Action::version) return print(u"velmora-cast " VELMORA_VERSION "\n"_s);
    Terminal terminal(drawsBlocks);
    if (line.action == CommandLine::Action::prepareOnly) {
        PrepareRun run(line, terminal);
        return complete(run, terminal);
    }
    SystemClock clock;
    Discovery discovery(clock);
    if (line.action == CommandLine::Action::list) {
        ListRun run(clock, discovery, terminal);
        return complete(run, terminal);
    }
    SettingsFile settings(u"com.quillet.velmora"_s);
    KnownReceivers known(settings);
    SettingsFile secrets(u"com.quillet.velmora.secrets"_s);
    CredentialStore credentials(clock, secrets);
    const ReceiverMemory receivers{&credentials, &known};
    if (line.action == CommandLine::Action::forget) {
        ForgetRun run(line.television, receivers, terminal);
        return complete(run, terminal);
    }
    Casting run(line, {terminal, clock, settings, discovery, receivers});
    return complete(run, terminal);
}

}  // namespace

int main(int argc, char** argv) {
    const bool drawsBlocks = hasUnicodeTerminal();
    Diagnostics::setStandardErrorFallback(false);
    qInstallMessageHandler(logRemark);
    const QCoreApplication application(argc, argv);
    const auto line = CommandLine::parse(QCoreApplication::arguments().sliced(1));
    const int status = line ? act(*line, drawsBlocks) : explainUsage(line.error());
    if (status != interruptedStatus) return status;
    // Qt would wait here for the lookup of a name that nobody answers, and a lookup cannot be cancelled.
    logger().finish();
    std::_Exit(status);
}
