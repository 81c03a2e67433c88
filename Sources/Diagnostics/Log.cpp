#include "Diagnostics/Log.h"

#include "Diagnostics/LogWriter.h"

#include <QDir>
#include <QFile>

#include <sys/uio.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>

// The place of the call in this file says nothing.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

constexpr auto subsystem = "com.quillet.velmora";
constexpr auto category = "session";
constexpr auto journalSocket = "/run/systemd/journal/socket"_L1;

std::atomic<bool> standardErrorFallback = true;

QString logFile() {
    QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(folder)) folder = QDir::homePath() + u"/.local/state"_s;
    return folder + u"/Logs/Velmora/velmora.log"_s;
}

/// Without Qt's formatting, whose tables are gone while other threads still log at the process's end.
QByteArray timeNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%03ld", local.tm_hour, local.tm_min, local.tm_sec,
                  now.tv_nsec / 1'000'000);
    return text.data();
}

QByteArray field(const char* name, const QByteArray& value) {
    return QByteArray(name) + '=' + value;
}

/// Each field goes with its length, so no text in `message` can end it and begin another.
void sendToJournal(const char* priority, const QString& message) {
    const std::array fields{field("MESSAGE", message.toUtf8()), field("PRIORITY", priority),
                            field("SUBSYSTEM", subsystem), field("CATEGORY", category),
                            field("SYSLOG_IDENTIFIER", "velmora")};
    std::array<iovec, fields.size()> vectors;
    for (std::size_t index = 0; index < fields.size(); ++index) {
        // The journal's interface is the kernel's, which does not know const.
        vectors[index] = {const_cast<char*>(fields[index].constData()),
                          static_cast<std::size_t>(fields[index].size())};
    }
    sd_journal_sendv(vectors.data(), static_cast<int>(vectors.size()));
}

}  // namespace

Diagnostics::Diagnostics()
    : writer_(std::make_unique<LogWriter>(logFile())), hasJournal_(QFile::exists(journalSocket)) {}

Diagnostics::~Diagnostics() = default;

void Diagnostics::notice(const QString& message) {
    log(Level::notice, message);
}

void Diagnostics::error(const QString& message) {
    log(Level::error, message);
}

void Diagnostics::setStandardErrorFallback(bool on) {
    standardErrorFallback = on;
}

void Diagnostics::finish() {
    writer_->finish();
}

void Diagnostics::log(Level level, const QString& message) {
    const bool isError = level == Level::error;
    const QByteArray text = timeNow() + (isError ? " [error] " : " [notice] ") + message.toUtf8() + '\n';
    LogWriter::Line line{text, {}};
    if (!hasJournal_ && standardErrorFallback) {
        line.forStandardError = QByteArray(subsystem) + ' ' + category + ' ' + text;
    }
    writer_->add(std::move(line));
    if (hasJournal_) sendToJournal(isError ? "3" : "5", message);
}

Diagnostics& logger() {
    static Diagnostics* const instance = [] {
        auto* const made = new Diagnostics;
        std::atexit([] { logger().finish(); });
        return made;
    }();
    return *instance;
}

}  // namespace velmora
