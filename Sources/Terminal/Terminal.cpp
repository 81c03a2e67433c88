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
    if (line_.isEmpty() || !isInForeground(STDERR_FILENO)) return;
    hideCursor();
    writeText(u"\r"_s + line_);
    writeAll(eraseToEnd);
}

void Terminal::clearLine() {
    if (line_.isEmpty()) return;
    line_.clear();
    writeAll("\r");
    writeAll(eraseToEnd);
}

void Terminal::print(const QString& message) {
    if (!line_.isEmpty()) {
        writeAll("\r");
        writeAll(eraseToEnd);
    }
    writeText(TerminalText::printable(message) + u'\n');
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

void Terminal::takeInput() {
    if (!wantsKeys_ || inputIsTaken || !isInForeground(STDIN_FILENO)) return;
    if (tcgetattr(STDIN_FILENO, &inputBefore) != 0) return;
    inputIsTaken = true;
    termios oneByOne = inputBefore;
    // Signals from the keyboard (Ctrl-C, Ctrl-Z) stay.
    oneByOne.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    oneByOne.c_cc[VMIN] = 1;
    oneByOne.c_cc[VTIME] = 0;
    // What was typed earlier was not meant for a movie that plays.
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &oneByOne);
    input_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    connect(input_.get(), &QSocketNotifier::activated, this, [this] { readKeys(); });
}

void Terminal::readKeys() {
    // In the background a read would stop the program.
    if (!isInForeground(STDIN_FILENO)) return;
    std::array<char, 64> buffer;
    const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count <= 0) {
        // The terminal is gone; its signal follows.
        input_->setEnabled(false);
        return;
    }
    for (const Key key : keyReader_.read(QByteArray(buffer.data(), count))) Q_EMIT keyPressed(key);
}

void Terminal::suspend() {
    if (!line_.isEmpty()) {
        writeAll("\r");
        writeAll(eraseToEnd);
    }
    if (input_) {
        input_->setEnabled(false);
        input_.release()->deleteLater();  // this may run inside its own signal
    }
    restoreAtOnce();
}

void Terminal::resume() {
    takeInput();
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
