// Counts how often a window is painted anew, as the X server sees it, whatever the window's program says.
//
//   frame_counter --seconds S --window NUMBER
//
// Prints {"frames": N, "seconds": S}. What is painted within four milliseconds is one frame: a frame may be brought to
// the screen in pieces, and no display is faster.

#include "display.h"

#include <cstdio>
#include <poll.h>

#include <xcb/damage.h>

using namespace orvanta::bench;
using namespace std::chrono_literals;

namespace {

constexpr auto oneFrame = 4ms;

} // namespace

int main(int argc, char** argv)
{
    const auto window = static_cast<xcb_window_t>(std::strtoul(option(argc, argv, "window", "0").c_str(), nullptr, 0));
    const auto seconds = std::chrono::seconds(numberOption(argc, argv, "seconds", 10));
    const Display display;
    const auto* extension = xcb_get_extension_data(display.raw(), &xcb_damage_id);
    const XcbPtr<xcb_damage_query_version_reply_t> version(
        xcb_damage_query_version_reply(display.raw(), xcb_damage_query_version(display.raw(), 1, 1), nullptr));
    const xcb_damage_damage_t damage = xcb_generate_id(display.raw());
    const XcbPtr<xcb_generic_error_t> refused(
        xcb_request_check(display.raw(), xcb_damage_create_checked(display.raw(), damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY)));
    if (!extension || !extension->present || !version || refused) {
        std::fputs("frame_counter: that window cannot be watched\n", stderr);
        return EXIT_FAILURE;
    }

    // A watch begins with all that is there already.
    xcb_damage_subtract(display.raw(), damage, XCB_NONE, XCB_NONE);
    std::free(xcb_get_input_focus_reply(display.raw(), xcb_get_input_focus(display.raw()), nullptr));
    while (display.nextEvent()) { }

    int frames = 0;
    const auto begin = Clock::now();
    Clock::time_point last = begin - 1s;
    pollfd readable { .fd = xcb_get_file_descriptor(display.raw()), .events = POLLIN, .revents = 0 };
    for (auto now = begin; now < begin + seconds && !display.isLost(); now = Clock::now()) {
        while (const auto event = display.nextEvent()) {
            if ((event->response_type & 0x7F) != extension->first_event + XCB_DAMAGE_NOTIFY)
                continue;
            xcb_damage_subtract(display.raw(), damage, XCB_NONE, XCB_NONE);
            if (now - last > oneFrame)
                ++frames;
            last = now;
        }
        display.flush();
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(begin + seconds - now);
        poll(&readable, 1, static_cast<int>(left.count()));
    }
    std::printf("{\"frames\": %d, \"seconds\": %.3f}\n", frames, milliseconds(Clock::now() - begin) / 1000);
    return display.isLost() ? EXIT_FAILURE : EXIT_SUCCESS;
}
