// Looks at a line of the screen, from edge to edge through its middle, where the compositor copies its frames for others
// (wlr-screencopy). A frame is composed as a whole or not at all, so the line tells of all of it.
//
//   screencopy_watch
//
// It reads a line a command, and answers each with one line of JSON:
//   look      {"line": [left, middle, right]}, the colours now, as numbers
//   watch     {"watching": true} at once; then, at the first frame in which a cover is painted (midnight at the edges, neither that
//             nor a window's colour in the middle), {"painted": nanoseconds of the monotonic clock at which the compositor composed it,
//             "looks": how many frames were looked at}
// While it watches, it is handed the frames in which something has changed.

#include "wayland_client.h"

#include "wlr-screencopy-unstable-v1-client.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <optional>

#include <wayland-client.h>

using namespace orvanta::bench;

namespace {

constexpr Pixel blockedColour = 0xE03020;
constexpr Pixel otherColour = 0xC0C0C0;
constexpr std::uint32_t managerVersion = 2;

class Watch {
public:
    Watch() : m_manager(m_client.need<zwlr_screencopy_manager_v1>(zwlr_screencopy_manager_v1_interface, managerVersion)) { }

    void look()
    {
        request(false);
        await();
        const auto [left, middle, right] = colours();
        std::printf("{\"line\": [%u, %u, %u]}\n", left, middle, right);
    }

    void watch()
    {
        request(true);
        m_client.display().roundTrip(); // the compositor has said how the picture has to be
        m_client.display().roundTrip(); // and knows where to put it
        std::puts("{\"watching\": true}");
        std::fflush(stdout);
        int looks = 1;
        for (await(); !isPainted(); ++looks) {
            request(true);
            await();
        }
        std::printf("{\"painted\": %lld, \"looks\": %d}\n", static_cast<long long>(m_moment), looks);
    }

private:
    static void buffer(
        void* data, zwlr_screencopy_frame_v1* frame, std::uint32_t format, std::uint32_t width, std::uint32_t height, std::uint32_t /*stride*/)
    {
        auto& self = *static_cast<Watch*>(data);
        if (!self.m_picture)
            self.m_picture.emplace(self.m_client.memory(), static_cast<int>(width), static_cast<int>(height), format);
        if (self.m_isForChanges)
            zwlr_screencopy_frame_v1_copy_with_damage(frame, self.m_picture->buffer());
        else
            zwlr_screencopy_frame_v1_copy(frame, self.m_picture->buffer());
    }
    static void flags(void* /*data*/, zwlr_screencopy_frame_v1* /*frame*/, std::uint32_t /*flags*/) { }
    static void ready(void* data, zwlr_screencopy_frame_v1* /*frame*/, std::uint32_t high, std::uint32_t low, std::uint32_t nanoseconds)
    {
        auto& self = *static_cast<Watch*>(data);
        constexpr std::int64_t second = 1'000'000'000;
        constexpr int half = 32;
        self.m_moment = ((static_cast<std::int64_t>(high) << half) + low) * second + nanoseconds;
        self.m_isTaken = true;
    }
    static void failed(void* /*data*/, zwlr_screencopy_frame_v1* /*frame*/)
    {
        std::fprintf(stderr, "The compositor copies no frame.\n");
        std::exit(EXIT_FAILURE);
    }
    static void damage(void* /*data*/, zwlr_screencopy_frame_v1* /*frame*/, std::uint32_t /*x*/, std::uint32_t /*y*/, std::uint32_t /*width*/,
        std::uint32_t /*height*/)
    {
    }

    /// Asks for the next frame, or, `isForChanges`, for the next in which something changes.
    void request(bool isForChanges)
    {
        m_isForChanges = isForChanges;
        m_isTaken = false;
        m_frame = zwlr_screencopy_manager_v1_capture_output_region(m_manager, 0, m_client.output(), 0, m_client.height() / 2, m_client.width(), 1);
        zwlr_screencopy_frame_v1_add_listener(m_frame, &listener, this);
    }

    void await()
    {
        while (!m_isTaken && wl_display_dispatch(m_client.raw()) >= 0)
            continue;
        if (!m_isTaken)
            std::exit(EXIT_FAILURE);
        zwlr_screencopy_frame_v1_destroy(m_frame);
    }

    [[nodiscard]] std::array<Pixel, 3> colours() const
    {
        constexpr Pixel opaque = 0xFFFFFF;
        const auto pixels = m_picture->pixels();
        return { pixels.front() & opaque, pixels[pixels.size() / 2] & opaque, pixels.back() & opaque };
    }

    [[nodiscard]] bool isPainted() const
    {
        const auto [left, middle, right] = colours();
        return left == midnight && right == midnight && middle != midnight && middle != blockedColour && middle != otherColour;
    }

    static constexpr zwlr_screencopy_frame_v1_listener listener {
        .buffer = &buffer, .flags = &flags, .ready = &ready, .failed = &failed, .damage = &damage
    };

    WaylandClient m_client;
    zwlr_screencopy_manager_v1* m_manager;
    std::optional<Picture> m_picture;
    zwlr_screencopy_frame_v1* m_frame = nullptr;
    bool m_isForChanges = false;
    bool m_isTaken = false;
    std::int64_t m_moment = 0;
};

} // namespace

int main()
{
    Watch watch;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "look")
            watch.look();
        else if (command == "watch")
            watch.watch();
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
