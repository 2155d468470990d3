// The least that covers a blocked application: a window of plain X requests, made before it is needed. It tells what the
// X server and the window manager need by themselves.
//
//   bare_cover --blocked CLASS [--override-redirect]
//   bare_cover --told PIPE [--width W --height H]
//
// It covers windows of that class, or shows and hides itself as it is told (see told.h); of that size, or of the screen's. It prints "ready" when it watches, and
// runs until it is ended.

#include "display.h"
#include "told.h"

#include <cstdio>
#include <poll.h>

using namespace orvanta::bench;

namespace {

class BareCover {
public:
    BareCover(std::string blockedClass, bool isOverrideRedirect, const std::string& pipe, int width, int height)
        : m_width(static_cast<std::uint16_t>(width > 0 ? width : m_display.width()))
        , m_height(static_cast<std::uint16_t>(height > 0 ? height : m_display.height()))
        , m_blockedClass(std::move(blockedClass))
        , m_isOverrideRedirect(isOverrideRedirect)
        , m_activeWindow(m_display.atom("_NET_ACTIVE_WINDOW"))
        , m_state(m_display.atom("_NET_WM_STATE"))
        , m_above(m_display.atom("_NET_WM_STATE_ABOVE"))
        , m_fullScreen(m_display.atom("_NET_WM_STATE_FULLSCREEN"))
        , m_cover(m_display.makeWindow({ 0, 0, m_width, m_height }, midnight, "bare-cover"))
    {
        const std::uint32_t bypasses = m_isOverrideRedirect ? 1 : 0;
        xcb_change_window_attributes(m_display.raw(), m_cover, XCB_CW_OVERRIDE_REDIRECT, &bypasses);
        const std::uint32_t watched = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_display.raw(), m_display.root(), XCB_CW_EVENT_MASK, &watched);
        m_pen = xcb_generate_id(m_display.raw());
        xcb_create_gc(m_display.raw(), m_pen, m_cover, XCB_GC_FOREGROUND, &gold);
        m_display.flush();
        if (!pipe.empty())
            m_told.emplace(pipe);
    }

    void run()
    {
        std::array<pollfd, 2> readable { { { .fd = xcb_get_file_descriptor(m_display.raw()), .events = POLLIN, .revents = 0 },
            { .fd = m_told ? m_told->descriptor() : -1, .events = POLLIN, .revents = 0 } } };
        while (!m_display.isLost()) {
            while (const auto event = m_display.nextEvent())
                handle(*event);
            if (const auto isToBeShown = m_told ? m_told->take() : std::nullopt)
                *isToBeShown ? show() : hide();
            m_display.flush();
            poll(readable.data(), readable.size(), -1);
        }
    }

private:
    void handle(const xcb_generic_event_t& event)
    {
        const int type = event.response_type & 0x7F;
        if (type == XCB_EXPOSE) {
            const auto quarterWidth = static_cast<std::uint16_t>(m_width / 4);
            const auto quarterHeight = static_cast<std::uint16_t>(m_height / 4);
            const xcb_rectangle_t middle { static_cast<std::int16_t>(quarterWidth), static_cast<std::int16_t>(quarterHeight),
                static_cast<std::uint16_t>(2 * quarterWidth), static_cast<std::uint16_t>(2 * quarterHeight) };
            xcb_poly_fill_rectangle(m_display.raw(), m_cover, m_pen, 1, &middle);
        } else if (!m_told && type == XCB_PROPERTY_NOTIFY && reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == m_activeWindow) {
            const xcb_window_t active = m_display.rootWindow(m_activeWindow);
            if (active == XCB_NONE || active == m_cover)
                return;
            if (m_display.classOf(active) == m_blockedClass)
                show();
            else
                hide();
        }
    }

    void hide() { xcb_unmap_window(m_display.raw(), m_cover); }

    void show()
    {
        if (m_isOverrideRedirect) {
            const std::uint32_t top = XCB_STACK_MODE_ABOVE;
            xcb_configure_window(m_display.raw(), m_cover, XCB_CONFIG_WINDOW_STACK_MODE, &top);
            xcb_map_window(m_display.raw(), m_cover);
            xcb_set_input_focus(m_display.raw(), XCB_INPUT_FOCUS_POINTER_ROOT, m_cover, XCB_CURRENT_TIME);
            return;
        }
        const std::array states { m_above, m_fullScreen };
        m_display.setAtoms(m_cover, m_state, states);
        xcb_map_window(m_display.raw(), m_cover);
        constexpr std::uint32_t fromPager = 2;
        m_display.tellWindowManager(m_cover, m_activeWindow, { fromPager, XCB_CURRENT_TIME, 0, 0 });
    }

    Display m_display;
    std::uint16_t m_width;
    std::uint16_t m_height;
    std::optional<Told> m_told;
    std::string m_blockedClass;
    bool m_isOverrideRedirect;
    xcb_atom_t m_activeWindow, m_state, m_above, m_fullScreen;
    xcb_window_t m_cover;
    xcb_gcontext_t m_pen = XCB_NONE;
};

} // namespace

int main(int argc, char** argv)
{
    BareCover cover(option(argc, argv, "blocked", "blocked"), hasFlag(argc, argv, "override-redirect"), option(argc, argv, "told", ""),
        numberOption(argc, argv, "width", 0), numberOption(argc, argv, "height", 0));
    std::puts("ready");
    std::fflush(stdout);
    cover.run();
    return EXIT_SUCCESS;
}
