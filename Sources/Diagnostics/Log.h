#pragma once

#include <QString>

#include <memory>

namespace velmora {

/// The application's one log: the system's journal (standard error where there is none) and the file
/// `velmora.log`, one line an entry, only ever appended to. Reached through `logger()`.
///
/// `notice` and `error` may be called from any thread; they never wait for the disk and never fail.
class Diagnostics {
  public:
    Diagnostics();
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    void notice(const QString& message);
    void error(const QString& message);

  private:
    class Writer;
    void write(QLatin1StringView level, const QString& message);

    std::shared_ptr<Writer> writer_;
};

/// The process-wide log, made on first use. What was logged before a normal exit is on disk after it.
Diagnostics& logger();

}  // namespace velmora
