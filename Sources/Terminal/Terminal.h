#pragma once

#include "Terminal/Keys.h"
#include "Terminal/ProgressLine.h"

#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace velmora {

/// The terminal that the program was started from: messages and one line that is redrawn in place, both on
/// standard error, and keys from standard input. What is no terminal gets messages only and gives no keys.
/// Main thread; one object a process.
///
/// The cursor and the input mode are put back by `suspend`, by the destructor, and by `restoreAtOnce` on the
/// ways out that run no destructors.
class Terminal : public QObject {
    Q_OBJECT

  public:
    /// `drawsBlocks`: the terminal's character set has more than ASCII.
    explicit Terminal(bool drawsBlocks);
    ~Terminal() override;

    /// Whether standard error redraws a line in place.
    [[nodiscard]] bool isInteractive() const { return isInteractive_; }
    [[nodiscard]] ProgressLine::Look look() const;

    /// Shows `line`, which fits, in place of the line shown before. Without effect where nothing can be
    /// redrawn.
    void showLine(const QString& line);
    void clearLine();

    /// Writes a message on lines of its own, above the line shown.
    void print(const QString& message);

    /// From now on keys arrive one by one, unseen. Without effect unless standard input is a terminal and the
    /// program is in its foreground.
    void startKeys();

    /// Asks for a line, which arrives as `lineEntered`; then keys go on, if they were started. What is drawn
    /// in place waits meanwhile. `secret`: it is not shown while it is typed. Standard input need not be a
    /// terminal.
    void ask(const QString& question, bool secret);
    /// Asks no more.
    void stopAsking();
    [[nodiscard]] bool isAsking() const { return asks_ != Asks::nothing; }

    /// Gives the terminal back for a while, and takes it again.
    void suspend();
    void resume();

    /// Puts the cursor and the input mode back. May be called from a signal handler.
    static void restoreAtOnce() noexcept;

  Q_SIGNALS:
    void keyPressed(velmora::Key key);
    void lineEntered(const QString& line);
    /// Standard input ended while a line was asked for: nobody will ever answer.
    void inputEnded();

  private:
    enum class Asks { nothing, openly, secretly };

    void readInput();
    void readLine(char byte);
    void takeInput();
    void giveInputBack();
    void hideCursor();
    void draw();

    bool isInteractive_;
    bool drawsBlocks_;
    bool wantsKeys_ = false;
    QString line_;
    KeyReader keyReader_;
    Asks asks_ = Asks::nothing;
    QString question_;
    QByteArray answer_;
    std::unique_ptr<QSocketNotifier> input_;
};

}  // namespace velmora
