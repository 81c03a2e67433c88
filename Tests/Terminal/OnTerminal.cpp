#include "Terminal/OnTerminal.h"

#include <QCoreApplication>
#include <QFile>

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <vector>

namespace velmora::test {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr auto patience = 10s;

OnTerminal::OnTerminal(const QString& program, const QStringList& arguments) {
    std::vector<QByteArray> words{QFile::encodeName(program)};
    for (const QString& argument : arguments) words.push_back(QFile::encodeName(argument));
    std::vector<char*> pointers;
    for (QByteArray& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    winsize size{24, 80, 0, 0};
    pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (pid_ == 0) {
        setenv("TERM", "xterm", 1);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
}

OnTerminal::~OnTerminal() {
    if (pid_ > 0 && kill(pid_, SIGKILL) == 0) waitpid(pid_, nullptr, 0);
    close(terminal_);
}

void OnTerminal::type(const QByteArray& keys) {
    ASSERT_EQ(write(terminal_, keys.constData(), static_cast<size_t>(keys.size())), keys.size());
}

bool OnTerminal::readMore() {
    // A television may live in this very process.
    QCoreApplication::processEvents();
    pollfd ready{terminal_, POLLIN, 0};
    if (poll(&ready, 1, 20) <= 0) return true;
    std::array<char, 4096> buffer;
    const ssize_t count = read(terminal_, buffer.data(), buffer.size());
    if (count > 0) screen_.append(buffer.data(), count);
    return count > 0;
}

bool OnTerminal::waitFor(const std::function<bool()>& condition) {
    const auto end = SteadyClock::now() + patience;
    while (!condition() && SteadyClock::now() < end && readMore()) {
    }
    return condition();
}

bool OnTerminal::shows(const QByteArray& text) {
    const bool shown = waitFor([&] { return screen_.indexOf(text, seen_) >= 0; });
    if (shown) seen_ = screen_.indexOf(text, seen_) + text.size();
    return shown;
}

bool OnTerminal::echoes() const {
    termios mode{};
    tcgetattr(terminal_, &mode);
    return (mode.c_lflag & ECHO) != 0 && (mode.c_lflag & ICANON) != 0;
}

int OnTerminal::wait() {
    const auto end = SteadyClock::now() + patience;
    int status = 0;
    while (SteadyClock::now() < end) {
        readMore();
        if (waitpid(pid_, &status, WNOHANG) != pid_) continue;
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return -1;
}

}  // namespace velmora::test
