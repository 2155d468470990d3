#include "platform/linux/wayland/wayland_display.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <poll.h>
#include <wayland-client.h>

namespace orvanta {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct WaylandDisplay::Listeners {
    static void global(void* data, wl_registry* /*registry*/, std::uint32_t name, const char* interface, std::uint32_t version)
    {
        static_cast<WaylandDisplay*>(data)->m_globals.push_back({ .name = name, .interface = interface, .version = version });
    }
    static void globalRemove(void* data, wl_registry* /*registry*/, std::uint32_t name)
    {
        std::erase_if(static_cast<WaylandDisplay*>(data)->m_globals, [name](const WaylandGlobal& known) { return known.name == name; });
    }
    static void done(void* data, wl_callback* /*callback*/, std::uint32_t /*time*/) { *static_cast<bool*>(data) = true; }

    static constexpr wl_registry_listener registry { .global = &global, .global_remove = &globalRemove };
    static constexpr wl_callback_listener callback { .done = &done };
};

std::unique_ptr<WaylandDisplay> WaylandDisplay::open()
{
    // Without a name the library would try one that some other session may have.
    if (const char* name = std::getenv("WAYLAND_DISPLAY"); !name || !*name)
        return nullptr;
    wl_display* display = wl_display_connect(nullptr);
    if (!display)
        return nullptr;
    std::unique_ptr<WaylandDisplay> opened(new WaylandDisplay(display));
    opened->m_registry = wl_display_get_registry(display);
    wl_registry_add_listener(opened->m_registry, &Listeners::registry, opened.get());
    // A compositor that does not answer is none.
    return opened->roundTrip(milliseconds(3000)) ? std::move(opened) : nullptr;
}

WaylandDisplay::~WaylandDisplay()
{
    if (m_registry)
        wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

bool WaylandDisplay::isLost() const
{
    return wl_display_get_error(m_display) != 0;
}

bool WaylandDisplay::offers(const char* interface) const
{
    return std::ranges::find(m_globals, interface, &WaylandGlobal::interface) != m_globals.end();
}

void* WaylandDisplay::bindFirst(const wl_interface& interface, std::uint32_t knownVersion)
{
    const auto found = std::ranges::find(m_globals, interface.name, &WaylandGlobal::interface);
    return found == m_globals.end() ? nullptr : bindGlobal(*found, interface, knownVersion);
}

void* WaylandDisplay::bindGlobal(const WaylandGlobal& global, const wl_interface& interface, std::uint32_t knownVersion)
{
    return wl_registry_bind(m_registry, global.name, &interface, std::min(global.version, knownVersion));
}

int WaylandDisplay::descriptor() const
{
    return wl_display_get_fd(m_display);
}

void WaylandDisplay::dispatch()
{
    while (readWithin(milliseconds::zero()))
        continue;
}

bool WaylandDisplay::roundTrip(milliseconds bound)
{
    bool isDone = false;
    wl_callback* callback = wl_display_sync(m_display);
    wl_callback_add_listener(callback, &Listeners::callback, &isDone);
    const auto deadline = steady_clock::now() + bound;
    while (!isDone && !isLost()) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
        if (left <= milliseconds::zero())
            break;
        readWithin(left);
    }
    wl_callback_destroy(callback);
    return isDone;
}

/// Waits for events at most so long, and handles them; whether there were any.
bool WaylandDisplay::readWithin(milliseconds bound)
{
    if (wl_display_prepare_read(m_display) != 0)
        return wl_display_dispatch_pending(m_display) > 0;
    const bool isBlocked = wl_display_flush(m_display) < 0 && errno == EAGAIN;
    pollfd socket { .fd = descriptor(), .events = static_cast<short>(isBlocked ? POLLIN | POLLOUT : POLLIN), .revents = 0 };
    const int ready = ::poll(&socket, 1, static_cast<int>(bound.count()));
    if (ready <= 0 || (socket.revents & (POLLIN | POLLHUP | POLLERR)) == 0) {
        wl_display_cancel_read(m_display);
        return false;
    }
    if (wl_display_read_events(m_display) < 0)
        return false;
    return wl_display_dispatch_pending(m_display) > 0;
}

} // namespace orvanta
