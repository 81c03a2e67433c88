// benchmark-first-frame PROGRAM [ARGUMENT...]: starts a program on an X display of its own ($DISPLAY) and
// prints the milliseconds until its first picture, and its process id. Ends the program when its own standard
// input does.
//
// A picture is two colours besides the screen's own: a window that is merely cleared is none.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <span>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr uint32_t screenColour = 0xff00ff;
constexpr uint32_t colourBits = 0xffffff;
constexpr uint16_t rowDistance = 20;  // pixels
constexpr auto lookEvery = 2ms;
constexpr auto patience = 60s;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

class Screen {
  public:
    Screen() : connection_(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(connection_)) return;
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXEL, &screenColour);
        xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() { xcb_disconnect(connection_); }

    [[nodiscard]] bool isThere() const { return screen_ != nullptr; }

    /// Looks at some rows of the screen only, so that looking costs next to nothing.
    [[nodiscard]] bool hasPicture() {
        std::vector<xcb_get_image_cookie_t> rows;
        for (uint16_t y = rowDistance; y < screen_->height_in_pixels; y += rowDistance)
            rows.push_back(xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, 0,
                                         static_cast<int16_t>(y), screen_->width_in_pixels, 1, ~0U));
        uint32_t first = screenColour;
        bool hasTwo = false;
        for (const auto row : rows) {
            const std::unique_ptr<xcb_get_image_reply_t, Free> image(
                xcb_get_image_reply(connection_, row, nullptr));
            if (!image) continue;
            const std::span bytes(xcb_get_image_data(image.get()),
                                  static_cast<size_t>(xcb_get_image_data_length(image.get())));
            for (size_t at = 0; at + sizeof(uint32_t) <= bytes.size(); at += sizeof(uint32_t)) {
                uint32_t pixel = 0;
                std::memcpy(&pixel, &bytes[at], sizeof pixel);
                pixel &= colourBits;
                if (pixel == screenColour || pixel == first) continue;
                if (first == screenColour)
                    first = pixel;
                else
                    hasTwo = true;
            }
        }
        return hasTwo;
    }

  private:
    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
};

pid_t start(char** command) {
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t process = 0;
    const int error = posix_spawnp(&process, command[0], nullptr, &attributes, command, environ);
    posix_spawnattr_destroy(&attributes);
    return error == 0 ? process : 0;
}

/// Milliseconds of processor time, on all of its threads.
double processorTime(pid_t process) {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// It, and whatever it started.
void end(pid_t process) {
    kill(-process, SIGTERM);
    for (auto waited = 0ms; waited < 5s && waitpid(process, nullptr, WNOHANG) == 0; waited += 10ms)
        std::this_thread::sleep_for(10ms);
    kill(-process, SIGKILL);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    Screen screen;
    if (!screen.isThere()) {
        std::fputs("There is no display.\n", stderr);
        return 1;
    }
    if (screen.hasPicture()) {
        std::fputs("Somebody else draws on this display.\n", stderr);
        return 1;
    }
    const auto started = SteadyClock::now();
    const pid_t process = start(argv + 1);
    if (process == 0) {
        std::fprintf(stderr, "%s does not start.\n", argv[1]);
        return 1;
    }
    bool isThere = false;
    while (!isThere && SteadyClock::now() - started < patience && waitpid(process, nullptr, WNOHANG) == 0) {
        std::this_thread::sleep_for(lookEvery);
        isThere = screen.hasPicture();
    }
    const std::chrono::duration<double, std::milli> elapsed = SteadyClock::now() - started;
    if (isThere) {
        std::printf("%.1f %.1f %d\n", elapsed.count(), processorTime(process), process);
        std::fflush(stdout);
        char byte = 0;
        while (read(STDIN_FILENO, &byte, 1) > 0) {
        }
    }
    end(process);
    return isThere ? 0 : 1;
}
