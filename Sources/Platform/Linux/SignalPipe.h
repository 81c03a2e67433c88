#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <initializer_list>

namespace velmora {

/// Signals of the process, brought to the event loop. Main thread; one object a process, and it stays until
/// the process ends.
class SignalPipe : public QObject {
    Q_OBJECT

  public:
    /// Called in the signal's own context, where almost nothing is allowed.
    using Handler = void (*)(int number);

    /// From here on, a write to a reader that has gone fails rather than ending the process.
    explicit SignalPipe(QObject* parent = nullptr);

    /// `first`, if there is one, hears of each of these signals before the event loop does.
    void bring(std::initializer_list<int> numbers, Handler first = nullptr);

    /// Leaves alone what whoever started the program wants ignored, and what a sanitizer handles. `flags` are
    /// those of sigaction.
    static void handle(int number, Handler handler, int flags);

  Q_SIGNALS:
    void arrived(int number);

  private:
    void deliver();

    QSocketNotifier readable_;
};

}  // namespace velmora
