// An application's window on Wayland, of one colour, which tells when it is activated.
//
//   wayland_window --application ID [--colour RRGGBB] [--full-screen] [--tell PIPE]
//
// It prints "ready" when it is shown, and at each activation one line of JSON: {"activated": nanoseconds of the monotonic
// clock}. Whoever reads the pipe is told of it first, to show a cover (see told.h).

#include "told.h"
#include "wayland_client.h"

#include "xdg-shell-client.h"

#include <cstdio>
#include <optional>

#include <wayland-client.h>

using namespace orvanta::bench;

namespace {

constexpr int usualWidth = 960;
constexpr int usualHeight = 540;

class Window {
public:
    Window(const std::string& application, Pixel colour, bool isFullScreen, const std::string& pipe)
        : m_colour(colour)
        , m_shell(m_client.need<xdg_wm_base>(xdg_wm_base_interface, 1))
        , m_surface(wl_compositor_create_surface(m_client.compositor()))
        , m_shellSurface(xdg_wm_base_get_xdg_surface(m_shell, m_surface))
        , m_toplevel(xdg_surface_get_toplevel(m_shellSurface))
    {
        if (!pipe.empty())
            m_told.emplace(pipe);
        xdg_wm_base_add_listener(m_shell, &shellListener, this);
        xdg_surface_add_listener(m_shellSurface, &surfaceListener, this);
        xdg_toplevel_add_listener(m_toplevel, &toplevelListener, this);
        xdg_toplevel_set_app_id(m_toplevel, application.c_str());
        xdg_toplevel_set_title(m_toplevel, application.c_str());
        if (isFullScreen)
            xdg_toplevel_set_fullscreen(m_toplevel, m_client.output());
        wl_surface_commit(m_surface);
    }

    void run() const { m_client.run(); }

private:
    static void ping(void* /*data*/, xdg_wm_base* shell, std::uint32_t serial) { xdg_wm_base_pong(shell, serial); }
    static void close(void* /*data*/, xdg_toplevel* /*toplevel*/) { }

    static void configureToplevel(void* data, xdg_toplevel* /*toplevel*/, std::int32_t width, std::int32_t height, wl_array* states)
    {
        const std::span said(static_cast<const std::uint32_t*>(states->data), states->size / sizeof(std::uint32_t));
        auto& self = *static_cast<Window*>(data);
        self.noteActivation(std::ranges::find(said, static_cast<std::uint32_t>(XDG_TOPLEVEL_STATE_ACTIVATED)) != said.end());
        self.m_width = width > 0 ? width : usualWidth;
        self.m_height = height > 0 ? height : usualHeight;
    }

    static void configureSurface(void* data, xdg_surface* surface, std::uint32_t serial)
    {
        xdg_surface_ack_configure(surface, serial);
        static_cast<Window*>(data)->paint();
    }

    void noteActivation(bool isActive)
    {
        if (std::exchange(m_isActive, isActive) || !isActive)
            return;
        const std::int64_t moment = now();
        if (m_told)
            m_told->tell(true);
        std::printf("{\"activated\": %lld}\n", static_cast<long long>(moment));
        std::fflush(stdout);
    }

    void paint()
    {
        const bool isFirst = !m_picture;
        if (isFirst || m_picture->width() != m_width || m_picture->height() != m_height) {
            m_picture.emplace(m_client.memory(), m_width, m_height, WL_SHM_FORMAT_XRGB8888);
            m_picture->fill({ 0, 0, static_cast<std::uint16_t>(m_width), static_cast<std::uint16_t>(m_height) }, m_colour);
            wl_surface_attach(m_surface, m_picture->buffer(), 0, 0);
            wl_surface_damage_buffer(m_surface, 0, 0, m_width, m_height);
        }
        wl_surface_commit(m_surface);
        if (!isFirst)
            return;
        std::puts("ready");
        std::fflush(stdout);
    }

    static constexpr xdg_wm_base_listener shellListener { .ping = &ping };
    static constexpr xdg_surface_listener surfaceListener { .configure = &configureSurface };
    static constexpr xdg_toplevel_listener toplevelListener {
        .configure = &configureToplevel,
        .close = &close,
        .configure_bounds = nullptr,
        .wm_capabilities = nullptr,
    };

    WaylandClient m_client;
    Pixel m_colour;
    xdg_wm_base* m_shell;
    wl_surface* m_surface;
    xdg_surface* m_shellSurface;
    xdg_toplevel* m_toplevel;
    std::optional<Told> m_told;
    std::optional<Picture> m_picture;
    bool m_isActive = false;
    int m_width = usualWidth;
    int m_height = usualHeight;
};

} // namespace

int main(int argc, char** argv)
{
    const std::string colour = option(argc, argv, "colour", "C0C0C0");
    constexpr int hexadecimal = 16;
    Window window(option(argc, argv, "application", "window"), static_cast<Pixel>(std::stoul(colour, nullptr, hexadecimal)),
        hasFlag(argc, argv, "full-screen"), option(argc, argv, "tell", ""));
    window.run();
    return EXIT_SUCCESS;
}
