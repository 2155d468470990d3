// Starts a program and tells when its first window is on the screen, and when that is painted.
//
//   first_window [--count N] -- PROGRAM [ARGUMENT…]
//
// For a display without a window manager, so that nothing but the program puts anything on the screen. The root gets a
// colour that no program uses; a window is painted when none of nine places inside it shows that colour. The program is
// ended with SIGTERM before it is started again. Prints one line of JSON a start: ms from the start to "mapped" and to
// "painted", and the CPU time of all threads by then, "cpu" (ms).
// Ends with status 1 if no window comes within thirty seconds, or if the program does not end.

#include "display.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <spawn.h>
#include <time.h> // NOLINT(modernize-deprecated-headers): clock_getcpuclockid is POSIX's

#include <sys/wait.h>

using namespace orvanta::bench;
using namespace std::chrono_literals;

extern char** environ; // NOLINT(readability-redundant-declaration): POSIX leaves it to the program

namespace {

constexpr Pixel unusedColour = 0xFF00FE;
constexpr auto patience = 30s;

struct Start {
    double mapped = 0;
    double painted = 0;
    double cpu = 0;
};

double cpuMilliseconds(pid_t process)
{
    clockid_t clock = 0;
    timespec used {};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0)
        return 0;
    return 1000.0 * static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e6;
}

class Watcher {
public:
    Watcher()
    {
        const std::array<std::uint32_t, 2> values { unusedColour, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY };
        xcb_change_window_attributes(m_display.raw(), m_display.root(), XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    }

    std::optional<Start> watch(char** command)
    {
        xcb_clear_area(m_display.raw(), 0, m_display.root(), 0, 0, 0, 0);
        m_display.flush();
        rest(200ms); // what the program before left to be cleared up
        while (m_display.nextEvent()) { }

        const auto begin = Clock::now();
        pid_t process = 0;
        if (posix_spawnp(&process, command[0], nullptr, nullptr, command, environ) != 0)
            return std::nullopt;
        std::optional<Start> start = watchFor(begin, process);
        if (start)
            start->cpu = cpuMilliseconds(process);
        if (!end(process))
            return std::nullopt;
        return start;
    }

private:
    std::optional<Start> watchFor(Clock::time_point begin, pid_t process)
    {
        Start start;
        xcb_window_t window = XCB_NONE;
        while (Clock::now() < begin + patience && !m_display.isLost()) {
            while (const auto event = m_display.nextEvent()) {
                const auto& map = reinterpret_cast<const xcb_map_notify_event_t&>(*event);
                if ((event->response_type & 0x7F) == XCB_MAP_NOTIFY && map.override_redirect == 0 && window == XCB_NONE) {
                    window = map.window;
                    start.mapped = milliseconds(Clock::now() - begin);
                }
            }
            if (window != XCB_NONE && isPainted(window)) {
                start.painted = milliseconds(Clock::now() - begin);
                return start;
            }
            if (waitpid(process, nullptr, WNOHANG) != 0)
                return std::nullopt;
            rest(100us);
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isPainted(xcb_window_t window) const
    {
        const XcbPtr<xcb_get_geometry_reply_t> area(xcb_get_geometry_reply(m_display.raw(), xcb_get_geometry(m_display.raw(), window), nullptr));
        if (!area)
            return false;
        constexpr int parts = 4;
        std::vector<Point> points;
        for (int row = 1; row < parts; ++row)
            for (int column = 1; column < parts; ++column)
                points.push_back({ static_cast<std::int16_t>(area->x + area->width * column / parts),
                    static_cast<std::int16_t>(area->y + area->height * row / parts) });
        for (const Pixel colour : m_display.pixels(points))
            if (colour == unusedColour)
                return false;
        return true;
    }

    /// False if it does not end.
    static bool end(pid_t process)
    {
        kill(process, SIGTERM);
        const auto deadline = Clock::now() + patience;
        while (waitpid(process, nullptr, WNOHANG) == 0) {
            if (Clock::now() > deadline) {
                kill(process, SIGKILL);
                waitpid(process, nullptr, 0);
                return false;
            }
            rest(1ms);
        }
        return true;
    }

    Display m_display;
};

} // namespace

int main(int argc, char** argv)
{
    char** command = argv;
    while (*command && std::string_view(*command) != "--")
        ++command;
    if (!*command || !command[1]) {
        std::fputs("first_window: which program?\n", stderr);
        return 2;
    }
    Watcher watcher;
    for (int number = numberOption(argc, argv, "count", 1); number > 0; --number) {
        const auto start = watcher.watch(command + 1);
        if (!start) {
            std::fprintf(stderr, "first_window: no window of %s, or it did not end\n", command[1]);
            return EXIT_FAILURE;
        }
        std::printf("{\"mapped\": %.3f, \"painted\": %.3f, \"cpu\": %.3f}\n", start->mapped, start->painted, start->cpu);
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
