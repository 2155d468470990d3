#pragma once

#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta::bench {

using Clock = std::chrono::steady_clock;

/// For what xcb allocates and leaves to its caller to free.
struct XcbFree {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

struct Point {
    std::int16_t x = 0;
    std::int16_t y = 0;
};

struct Area {
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

/// A colour as a 24-bit screen holds it, 0xRRGGBB.
using Pixel = std::uint32_t;

/// OrvantaPalette's midnight: what a blocking screen is painted with wherever nothing else stands.
constexpr Pixel midnight = 0x131A29;

/// What stands in the middle of a bare cover.
constexpr Pixel gold = 0xD4A03A;

[[nodiscard]] double milliseconds(Clock::duration duration);

/// Sleeps about that long, with the kernel's slack taken away.
void rest(std::chrono::microseconds duration);

/// The X display of the environment, with the few operations that the measuring programs share. Ends the program with a
/// line on standard error if there is none. Requests that do not return anything wait in a buffer until flush().
class Display {
public:
    Display();
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    [[nodiscard]] xcb_connection_t* raw() const { return m_connection; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] std::uint16_t width() const { return m_screen->width_in_pixels; }
    [[nodiscard]] std::uint16_t height() const { return m_screen->height_in_pixels; }

    [[nodiscard]] xcb_atom_t atom(std::string_view name) const;

    /// An unmapped window of one colour. `className` becomes both halves of WM_CLASS.
    [[nodiscard]] xcb_window_t makeWindow(const Area& area, Pixel colour, std::string_view className) const;

    void setAtoms(xcb_window_t window, xcb_atom_t property, std::span<const xcb_atom_t> values) const;
    void setNumber(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint32_t value) const;

    /// Asks the window manager for something about a window, with up to four numbers.
    void tellWindowManager(xcb_window_t window, xcb_atom_t type, const std::array<std::uint32_t, 4>& numbers) const;

    void flush() const { xcb_flush(m_connection); }

    /// The window that a property of the root names; XCB_NONE if there is none.
    [[nodiscard]] xcb_window_t rootWindow(xcb_atom_t property) const;

    /// The second half of a window's WM_CLASS; empty if there is none.
    [[nodiscard]] std::string classOf(xcb_window_t window) const;

    /// The colours on the screen at those places, read in one round trip.
    [[nodiscard]] std::vector<Pixel> pixels(std::span<const Point> points) const;

    /// The next event that has come, without waiting; nothing when there is none.
    [[nodiscard]] XcbPtr<xcb_generic_event_t> nextEvent() const { return XcbPtr<xcb_generic_event_t>(xcb_poll_for_event(m_connection)); }

    [[nodiscard]] bool isLost() const { return xcb_connection_has_error(m_connection) != 0; }

private:
    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen = nullptr;
};

/// The argument after `--name`, or what stands for it when it is not given.
[[nodiscard]] std::string option(int argc, char** argv, std::string_view name, std::string_view otherwise);
[[nodiscard]] int numberOption(int argc, char** argv, std::string_view name, int otherwise);
[[nodiscard]] bool hasFlag(int argc, char** argv, std::string_view name);

} // namespace orvanta::bench
