#include "wayland_client.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace orvanta::bench {

namespace {

constexpr std::uint32_t outputVersion = 2;

[[noreturn]] void giveUp(const char* why)
{
    std::fprintf(stderr, "%s\n", why);
    std::exit(EXIT_FAILURE);
}

} // namespace

/// What an output says of itself.
struct WaylandClient::Place {
    int x = -1;
    int y = -1;
    int width = 0;
    int height = 0;

    static void geometry(void* data, wl_output* /*output*/, std::int32_t x, std::int32_t y, std::int32_t /*width*/, std::int32_t /*height*/,
        std::int32_t /*subpixel*/, const char* /*make*/, const char* /*model*/, std::int32_t /*transform*/)
    {
        static_cast<Place*>(data)->x = x;
        static_cast<Place*>(data)->y = y;
    }
    static void mode(void* data, wl_output* /*output*/, std::uint32_t flags, std::int32_t width, std::int32_t height, std::int32_t /*refresh*/)
    {
        if ((flags & WL_OUTPUT_MODE_CURRENT) == 0)
            return;
        static_cast<Place*>(data)->width = width;
        static_cast<Place*>(data)->height = height;
    }
    static void done(void* /*data*/, wl_output* /*output*/) { }
    static void scale(void* /*data*/, wl_output* /*output*/, std::int32_t /*factor*/) { }

    static constexpr wl_output_listener listener {
        .geometry = &geometry,
        .mode = &mode,
        .done = &done,
        .scale = &scale,
        .name = nullptr,
        .description = nullptr,
    };
};

Picture::Picture(wl_shm* memory, int width, int height, std::uint32_t format) : m_width(width), m_height(height)
{
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::size_t size = count * sizeof(Pixel);
    const int file = memfd_create("picture", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, static_cast<off_t>(size)) != 0)
        giveUp("There is no memory to share.");
    void* shared = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (shared == MAP_FAILED)
        giveUp("There is no memory to share.");
    m_pixels = { static_cast<Pixel*>(shared), count };
    constexpr int pixelSize = sizeof(Pixel);
    wl_shm_pool* pool = wl_shm_create_pool(memory, file, static_cast<std::int32_t>(size));
    m_buffer = wl_shm_pool_create_buffer(pool, 0, width, height, width * pixelSize, format);
    wl_shm_pool_destroy(pool);
    close(file);
}

Picture::~Picture()
{
    wl_buffer_destroy(m_buffer);
    munmap(m_pixels.data(), m_pixels.size_bytes());
}

void Picture::fill(const Area& area, Pixel colour) const
{
    for (int y = area.y; y < area.y + area.height; ++y)
        std::ranges::fill(m_pixels.subspan(static_cast<std::size_t>(y * m_width + area.x), area.width), colour | 0xFF000000U);
}

WaylandClient::WaylandClient() : m_display(WaylandDisplay::open())
{
    if (!m_display)
        giveUp("There is no Wayland compositor to measure on.");
    constexpr std::uint32_t compositorVersion = 4;
    m_compositor = need<wl_compositor>(wl_compositor_interface, compositorVersion);
    m_memory = need<wl_shm>(wl_shm_interface, 1);
    findOutput();
}

WaylandClient::~WaylandClient() = default;

void* WaylandClient::needed(void* bound, const wl_interface& interface)
{
    if (!bound) {
        std::fprintf(stderr, "The compositor has no %s.\n", interface.name);
        std::exit(EXIT_FAILURE);
    }
    return bound;
}

void WaylandClient::findOutput()
{
    for (const WaylandGlobal& global : m_display->globals()) {
        if (global.interface != wl_output_interface.name)
            continue;
        auto* output = static_cast<wl_output*>(m_display->bindGlobal(global, wl_output_interface, outputVersion));
        const Place& place = *m_places.emplace_back(std::make_unique<Place>());
        wl_output_add_listener(output, &Place::listener, m_places.back().get());
        m_display->roundTrip();
        // Some compositors say so of every display, the first one first.
        if (!m_output && place.x == 0 && place.y == 0) {
            m_output = output;
            m_width = place.width;
            m_height = place.height;
        }
    }
    if (!m_output)
        giveUp("No display begins where the desktop begins.");
}

void WaylandClient::run() const
{
    while (wl_display_dispatch(raw()) >= 0)
        continue;
}

std::int64_t now()
{
    timespec time {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    constexpr std::int64_t second = 1'000'000'000;
    return time.tv_sec * second + time.tv_nsec;
}

} // namespace orvanta::bench
