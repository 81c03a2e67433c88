#include "Terminal/Terminal.h"

#include "Terminal/TerminalText.h"

#include <QByteArray>
#include <QSocketNotifier>

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <string_view>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view showCursor = "\x1b[?25h";
constexpr std::string_view concealCursor = "\x1b[?25l";
constexpr std::string_view eraseToEnd = "\x1b[K";
constexpr int usualWidth = 80;
constexpr qsizetype answerLimit = 256;  // a PIN or a password

// What a signal handler needs to put the terminal back; written only while the flag beside it is down.
std::atomic<bool> cursorIsHidden = false;
std::atomic<bool> inputIsTaken = false;
termios inputBefore;

void writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(STDERR_FILENO, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        // Nobody is left to tell.
        if (written <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void writeText(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    writeAll({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

bool redrawsInPlace() {
    const QByteArray kind = qgetenv("TERM");
    return isatty(STDERR_FILENO) != 0 && !kind.isEmpty() && kind != "dumb";
}

/// Whether the terminal behind `descriptor` is ours to use now. One without job control always is.
bool isInForeground(int descriptor) {
    const pid_t foreground = tcgetpgrp(descriptor);
    return foreground < 0 || foreground == getpgrp();
}

}  // namespace

Terminal::Terminal(bool drawsBlocks) : isInteractive_(redrawsInPlace()), drawsBlocks_(drawsBlocks) {}

Terminal::~Terminal() {
    suspend();
}

ProgressLine::Look Terminal::look() const {
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    // The last column stays empty: writing there makes some terminals begin a new line.
    return {(known ? size.ws_col : usualWidth) - 1, drawsBlocks_};
}

void Terminal::showLine(const QString& line) {
    if (!isInteractive_ || (line == line_ && cursorIsHidden)) return;
    line_ = line;
    draw();
}

void Terminal::draw() {
    if (line_.isEmpty() || isAsking() || !isInForeground(STDERR_FILENO)) return;
    hideCursor();
    writeText(u"\r"_s + line_);
    writeAll(eraseToEnd);
}

void Terminal::clearLine() {
    if (line_.isEmpty()) return;
    line_.clear();
    if (isAsking()) return;
    writeAll("\r");
    writeAll(eraseToEnd);
}

void Terminal::print(const QString& message) {
    if (!line_.isEmpty() || isAsking()) {
        writeAll("\r");
        writeAll(eraseToEnd);
    }
    writeText(TerminalText::printable(message) + u'\n');
    if (isAsking()) writeText(question_);
    draw();
}

void Terminal::hideCursor() {
    if (cursorIsHidden) return;
    cursorIsHidden = true;
    writeAll(concealCursor);
}

void Terminal::startKeys() {
    if (isatty(STDIN_FILENO) == 0) return;
    wantsKeys_ = true;
    takeInput();
}

void Terminal::ask(const QString& question, bool secret) {
    giveInputBack();
    if (!line_.isEmpty()) {
        writeAll("\r");
        writeAll(eraseToEnd);
    }
    asks_ = secret ? Asks::secretly : Asks::openly;
    answer_.clear();
    question_ = TerminalText::printable(question);
    if (cursorIsHidden.exchange(false)) writeAll(showCursor);
    // First of all, since whoever sees the question may type at once: that would be shown, and then dropped.
    takeInput();
    writeText(question_);
}

void Terminal::stopAsking() {
    if (!isAsking()) return;
    asks_ = Asks::nothing;
    writeAll("\n");
    giveInputBack();
    takeInput();
    draw();
}

void Terminal::takeInput() {
    const bool isTerminal = isatty(STDIN_FILENO) != 0;
    if (input_ || (!wantsKeys_ && !isAsking()) || (isTerminal && !isInForeground(STDIN_FILENO))) return;
    if (isTerminal) {
        if (tcgetattr(STDIN_FILENO, &inputBefore) != 0) return;
        inputIsTaken = true;
        termios wanted = inputBefore;
        // Signals from the keyboard (Ctrl-C, Ctrl-Z) stay.
        if (!isAsking()) {
            wanted.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
            wanted.c_cc[VMIN] = 1;
            wanted.c_cc[VTIME] = 0;
        } else if (asks_ == Asks::secretly) {
            wanted.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        }
        // What was typed earlier was not meant for this.
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &wanted);
    }
    input_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    connect(input_.get(), &QSocketNotifier::activated, this, [this] { readInput(); });
}

void Terminal::readInput() {
    // In the background a read would stop the program.
    if (isatty(STDIN_FILENO) != 0 && !isInForeground(STDIN_FILENO)) return;
    std::array<char, 64> buffer;
    // Byte by byte, so that what stands behind the line in a pipe is left for the next question.
    const ssize_t count = read(STDIN_FILENO, buffer.data(), isAsking() ? 1 : buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count <= 0) {
        // Where it was a terminal, that is gone, and its signal follows.
        input_->setEnabled(false);
        if (isAsking()) Q_EMIT inputEnded();
        return;
    }
    if (isAsking()) return readLine(buffer.front());
    for (const Key key : keyReader_.read(QByteArray(buffer.data(), count))) Q_EMIT keyPressed(key);
}

void Terminal::readLine(char byte) {
    if (byte != '\n') {
        if (answer_.size() < answerLimit) answer_ += byte;
        return;
    }
    const QString line = QString::fromLocal8Bit(answer_);
    answer_.fill('\0');
    // With what was typed the terminal has begun a new line, unless it keeps a secret.
    const bool beginsLine = isatty(STDIN_FILENO) == 0 || asks_ == Asks::secretly;
    asks_ = Asks::nothing;
    if (beginsLine) writeAll("\n");
    giveInputBack();
    takeInput();
    Q_EMIT lineEntered(line);
}

void Terminal::giveInputBack() {
    if (input_) {
        input_->setEnabled(false);
        input_.release()->deleteLater();  // this may run inside its own signal
    }
    if (inputIsTaken) {
        tcsetattr(STDIN_FILENO, TCSANOW, &inputBefore);
        inputIsTaken = false;
    }
}

void Terminal::suspend() {
    if (!line_.isEmpty()) {
        writeAll("\r");
        writeAll(eraseToEnd);
    }
    giveInputBack();
    restoreAtOnce();
}

void Terminal::resume() {
    takeInput();
    if (isAsking()) writeText(question_);
    draw();
}

void Terminal::restoreAtOnce() noexcept {
    if (inputIsTaken) {
        tcsetattr(STDIN_FILENO, TCSANOW, &inputBefore);
        inputIsTaken = false;
    }
    if (cursorIsHidden) {
        (void)!write(STDERR_FILENO, showCursor.data(), showCursor.size());
        cursorIsHidden = false;
    }
}

}  // namespace velmora
