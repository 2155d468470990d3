// Brings a window of a blocked application to the front, again and again, and watches the screen until a cover is
// painted over it; then brings another application's window to the front, and watches until the cover is gone.
//
//   activation_probe --blocked CLASS --other CLASS [--count N] [--full-screen] [--shown MS] [--pause MS]
//
// Both windows are its own. A cover is painted when every place where a blocking screen is midnight reads midnight and
// the middle of the screen is neither that nor the window beneath. For each activation it prints one line of JSON:
//   asked     ms from the request to the window manager until painted
//   active    ms from the moment when the window was the active one until painted, rounded up: it begins with the last
//             look at which the window was not active yet
//   midnight  ms as "active", until the places are midnight, whatever the middle shows
// and at last {"look_us": how long one look takes, "looks": how many were taken}.
// Ends with status 1 if a cover does not come, or does not go, within ten seconds.

#include "display.h"

#include <cstdio>
#include <optional>
#include <random>

using namespace orvanta::bench;
using namespace std::chrono_literals;

namespace {

constexpr Pixel blockedColour = 0xE03020;
constexpr Pixel otherColour = 0xC0C0C0;
constexpr std::uint32_t fromPager = 2; // source indication of _NET_ACTIVE_WINDOW: a tool that the user works the desktop with
constexpr auto patience = 10s;

/// One look at the screen, all in one round trip but for the active window, which is asked for just before.
struct Look {
    Clock::time_point begin;
    Clock::time_point end;
    xcb_window_t active = XCB_NONE;
    bool isMidnight = false;
    bool isPainted = false;
};

class Probe {
public:
    Probe(std::string_view blockedClass, std::string_view otherClass, bool isFullScreen) : m_activeWindow(m_display.atom("_NET_ACTIVE_WINDOW"))
    {
        const auto width = m_display.width();
        const auto height = m_display.height();
        // Its middle is the middle of the screen.
        const Area area { static_cast<std::int16_t>(width / 4), static_cast<std::int16_t>(height / 4), static_cast<std::uint16_t>(width / 2),
            static_cast<std::uint16_t>(height / 2) };
        m_blocked = m_display.makeWindow(area, blockedColour, blockedClass);
        m_other = m_display.makeWindow({ 60, 60, 300, 200 }, otherColour, otherClass);
        if (isFullScreen) {
            const std::array states { m_display.atom("_NET_WM_STATE_FULLSCREEN") };
            m_display.setAtoms(m_blocked, m_display.atom("_NET_WM_STATE"), states);
        }
        constexpr int inset = 8;
        const auto right = static_cast<std::int16_t>(width - inset);
        const auto bottom = static_cast<std::int16_t>(height - inset);
        const auto middleX = static_cast<std::int16_t>(width / 2);
        const auto middleY = static_cast<std::int16_t>(height / 2);
        // Not above and below the middle: with a full breath the light reaches the edges there.
        m_points = { { inset, inset }, { right, inset }, { inset, bottom }, { right, bottom }, { inset, middleY }, { right, middleY },
            { middleX, middleY } };

        xcb_map_window(m_display.raw(), m_blocked);
        xcb_map_window(m_display.raw(), m_other);
        m_display.flush();
    }

    /// False if it does not become the active window, or if a cover stays.
    bool showOther()
    {
        activate(m_other);
        const auto deadline = Clock::now() + patience;
        for (Look now = look(); now.active != m_other || now.isMidnight; now = look()) {
            if (Clock::now() > deadline || m_display.isLost())
                return false;
            rest(1ms);
        }
        return true;
    }

    /// False if no cover comes.
    bool showBlocked()
    {
        const auto asked = Clock::now();
        activate(m_blocked);
        Clock::time_point before = asked;
        std::optional<Clock::time_point> left;   // the other window is no longer the active one
        std::optional<Clock::time_point> active; // this one is, or the cover already
        std::optional<Clock::time_point> midnightSeen;
        while (Clock::now() < asked + patience && !m_display.isLost()) {
            const Look now = look();
            if (!left && now.active != m_other)
                left = before;
            if (left && !active && now.active != XCB_NONE)
                active = before;
            if (left && !midnightSeen && now.isMidnight)
                midnightSeen = now.end;
            if (left && now.isPainted) {
                // A cover that the window manager does not know takes the active window away, perhaps between two looks.
                const auto begin = active.value_or(*left);
                std::printf("{\"asked\": %.3f, \"active\": %.3f, \"midnight\": %.3f}\n", milliseconds(now.end - asked), milliseconds(now.end - begin),
                    milliseconds(*midnightSeen - begin));
                std::fflush(stdout);
                return true;
            }
            before = now.begin;
            rest(100us);
        }
        return false;
    }

    void printOverhead() const
    {
        const double each = m_looks > 0 ? 1000 * milliseconds(m_lookTime) / m_looks : 0;
        std::printf("{\"look_us\": %.1f, \"looks\": %d}\n", each, m_looks);
    }

private:
    void activate(xcb_window_t window)
    {
        m_display.tellWindowManager(window, m_activeWindow, { fromPager, XCB_CURRENT_TIME, 0, 0 });
        m_display.flush();
    }

    Look look()
    {
        Look result;
        result.begin = Clock::now();
        while (m_display.nextEvent()) { }
        result.active = m_display.rootWindow(m_activeWindow);
        const std::vector<Pixel> colours = m_display.pixels(m_points);
        result.end = Clock::now();
        const Pixel middle = colours.back();
        result.isMidnight = true;
        for (std::size_t index = 0; index + 1 < colours.size(); ++index)
            result.isMidnight = result.isMidnight && colours[index] == midnight;
        result.isPainted = result.isMidnight && middle != midnight && middle != blockedColour && middle != otherColour;
        ++m_looks;
        m_lookTime += result.end - result.begin;
        return result;
    }

    Display m_display;
    xcb_atom_t m_activeWindow;
    xcb_window_t m_blocked = XCB_NONE;
    xcb_window_t m_other = XCB_NONE;
    std::vector<Point> m_points; ///< the last is the middle
    int m_looks = 0;
    Clock::duration m_lookTime {};
};

} // namespace

int main(int argc, char** argv)
{
    const int count = numberOption(argc, argv, "count", 100);
    const auto shown = std::chrono::milliseconds(numberOption(argc, argv, "shown", 200));
    const auto pause = std::chrono::milliseconds(numberOption(argc, argv, "pause", 300));
    Probe probe(option(argc, argv, "blocked", "blocked"), option(argc, argv, "other", "other"), hasFlag(argc, argv, "full-screen"));
    rest(300ms); // both are mapped and have had their turn as the active window

    // So that no rhythm of the watched program falls into step with ours.
    std::minstd_rand random(1); // NOLINT(bugprone-random-generator-seed,cert-msc51-cpp): the same pauses in every run
    std::uniform_int_distribution<int> extra(0, 100);
    for (int number = 0; number < count; ++number) {
        if (!probe.showOther()) {
            std::fprintf(stderr, "activation_probe: the cover did not go\n");
            return EXIT_FAILURE;
        }
        rest(pause + std::chrono::milliseconds(extra(random)));
        if (!probe.showBlocked()) {
            std::fprintf(stderr, "activation_probe: no cover came\n");
            return EXIT_FAILURE;
        }
        rest(shown);
    }
    probe.printOverhead();
    return EXIT_SUCCESS;
}
