#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <functional>

namespace velmora::test {

/// A program on a terminal of its own, 80 columns wide.
class OnTerminal {
  public:
    OnTerminal(const QString& program, const QStringList& arguments);
    ~OnTerminal();
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;

    void type(const QByteArray& keys);
    /// Whether it shows `text` within ten seconds, not counting what an earlier wait has seen.
    [[nodiscard]] bool shows(const QByteArray& text);
    /// Whether `condition` comes true within ten seconds, this process's own events being delivered.
    [[nodiscard]] bool waitFor(const std::function<bool()>& condition);
    /// Everything it wrote so far.
    [[nodiscard]] const QByteArray& screen() const { return screen_; }
    [[nodiscard]] bool echoes() const;
    /// The exit status; 128 and more for an end by a signal. Waits at most ten seconds.
    [[nodiscard]] int wait();
    [[nodiscard]] pid_t pid() const { return pid_; }

  private:
    bool readMore();

    int terminal_ = -1;
    pid_t pid_ = -1;
    QByteArray screen_;
    qsizetype seen_ = 0;
};

}  // namespace velmora::test
