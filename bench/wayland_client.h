#pragma once

#include "display.h"
#include "platform/linux/wayland/wayland_display.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct wl_buffer;
struct wl_compositor;
struct wl_output;
struct wl_shm;

namespace orvanta::bench {

/// Memory that is shared with the compositor, 32 bits a pixel.
class Picture {
public:
    Picture(wl_shm* memory, int width, int height, std::uint32_t format);
    ~Picture();
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    [[nodiscard]] wl_buffer* buffer() const { return m_buffer; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] std::span<Pixel> pixels() const { return m_pixels; }

    void fill(const Area& area, Pixel colour) const;

private:
    int m_width;
    int m_height;
    std::span<Pixel> m_pixels;
    wl_buffer* m_buffer;
};

/// A connection to the compositor of the environment, with what each of the measuring programs needs of it. Ends the program with
/// a line on standard error if there is none.
class WaylandClient {
public:
    WaylandClient();
    ~WaylandClient();
    WaylandClient(const WaylandClient&) = delete;
    WaylandClient& operator=(const WaylandClient&) = delete;

    /// Binds a global; ends the program if the compositor has none such.
    template <typename Object>
    [[nodiscard]] Object* need(const wl_interface& interface, std::uint32_t knownVersion)
    {
        return static_cast<Object*>(needed(m_display->bind<void>(interface, knownVersion), interface));
    }

    [[nodiscard]] wl_display* raw() const { return m_display->raw(); }
    [[nodiscard]] WaylandDisplay& display() const { return *m_display; }
    [[nodiscard]] wl_compositor* compositor() const { return m_compositor; }
    [[nodiscard]] wl_shm* memory() const { return m_memory; }

    /// The display that begins where the whole desktop begins, and its size.
    [[nodiscard]] wl_output* output() const { return m_output; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }

    /// Handles what comes, until the compositor goes.
    void run() const;

private:
    struct Place;

    static void* needed(void* bound, const wl_interface& interface);
    void findOutput();

    std::unique_ptr<WaylandDisplay> m_display;
    wl_compositor* m_compositor;
    wl_shm* m_memory;
    wl_output* m_output = nullptr;
    int m_width = 0;
    int m_height = 0;
    std::vector<std::unique_ptr<Place>> m_places; ///< of each display, which tells of itself again when it changes
};

/// Nanoseconds of the clock by which all programs of one measurement stamp what they see.
[[nodiscard]] std::int64_t now();

} // namespace orvanta::bench
