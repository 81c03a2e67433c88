#pragma once

#include <QString>

#include <memory>

namespace velmora {

class LogWriter;

/// The application's one log: the system's journal (standard error where there is none) and the file
/// `velmora.log`, one line an entry, only ever appended to. Reached through `logger()`.
///
/// `notice` and `error` may be called from any thread; they never wait for the disk and never fail.
class Diagnostics {
  public:
    /// Opens `Logs/Velmora/velmora.log` in the user's state folder (`$XDG_STATE_HOME`). Without that file the
    /// journal still receives every entry.
    Diagnostics();
    /// Everything logged before is on disk afterwards.
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    void notice(const QString& message);
    void error(const QString& message);

    /// Whether standard error stands in where there is no journal, for the whole process; it does at first.
    /// For programs that draw on the terminal themselves.
    static void setStandardErrorFallback(bool on);

    /// Waits until everything logged so far is on disk; later entries are written at once by their callers.
    void finish();

  private:
    enum class Level { notice, error };
    void log(Level level, const QString& message);

    std::unique_ptr<LogWriter> writer_;
    bool hasJournal_;
};

/// The process-wide log, made on first use and never destroyed: destructors of static objects and threads
/// that are still running may log too. What was logged before a normal exit is on disk after it.
Diagnostics& logger();

}  // namespace velmora
