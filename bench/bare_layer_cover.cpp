// The least that covers a display where there are layers: a surface in the topmost one, with a picture that was painted before.
// It tells what the compositor needs by itself.
//
//   bare_layer_cover --told PIPE
//
// It prints "ready" when it waits to be told (see told.h), and runs until it is ended.

#include "told.h"
#include "wayland_client.h"

#include "wlr-layer-shell-unstable-v1-client.h"

#include <array>
#include <cstdio>

#include <poll.h>
#include <wayland-client.h>

using namespace orvanta::bench;

namespace {

constexpr std::uint32_t shellVersion = 4;

class BareLayerCover {
public:
    explicit BareLayerCover(const std::string& pipe)
        : m_told(pipe)
        , m_shell(m_client.need<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, shellVersion))
        , m_picture(m_client.memory(), m_client.width(), m_client.height(), WL_SHM_FORMAT_XRGB8888)
    {
        const auto width = static_cast<std::uint16_t>(m_picture.width());
        const auto height = static_cast<std::uint16_t>(m_picture.height());
        m_picture.fill({ 0, 0, width, height }, midnight);
        m_picture.fill({ static_cast<std::int16_t>(width / 4), static_cast<std::int16_t>(height / 4), static_cast<std::uint16_t>(width / 2),
                           static_cast<std::uint16_t>(height / 2) },
            gold);
    }

    void run()
    {
        std::array<pollfd, 2> readable { { { .fd = m_told.descriptor(), .events = POLLIN, .revents = 0 },
            { .fd = m_client.display().descriptor(), .events = POLLIN, .revents = 0 } } };
        while (!m_client.display().isLost()) {
            if (const auto isToBeShown = m_told.take())
                *isToBeShown ? show() : hide();
            m_client.display().dispatch();
            poll(readable.data(), readable.size(), -1);
        }
    }

private:
    static void configure(void* data, zwlr_layer_surface_v1* role, std::uint32_t serial, std::uint32_t /*width*/, std::uint32_t /*height*/)
    {
        zwlr_layer_surface_v1_ack_configure(role, serial);
        const auto& self = *static_cast<BareLayerCover*>(data);
        wl_surface_attach(self.m_surface, self.m_picture.buffer(), 0, 0);
        wl_surface_damage_buffer(self.m_surface, 0, 0, self.m_picture.width(), self.m_picture.height());
        wl_surface_commit(self.m_surface);
    }
    static void closed(void* /*data*/, zwlr_layer_surface_v1* /*role*/) { }

    void show()
    {
        if (m_surface)
            return;
        m_surface = wl_compositor_create_surface(m_client.compositor());
        m_role = zwlr_layer_shell_v1_get_layer_surface(m_shell, m_surface, m_client.output(), ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "bare-cover");
        zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
        zwlr_layer_surface_v1_set_size(m_role, 0, 0);
        zwlr_layer_surface_v1_set_anchor(m_role,
            ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT
                | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
        zwlr_layer_surface_v1_set_exclusive_zone(m_role, -1);
        zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
        wl_surface_commit(m_surface);
    }

    void hide()
    {
        if (!m_surface)
            return;
        zwlr_layer_surface_v1_destroy(m_role);
        wl_surface_destroy(std::exchange(m_surface, nullptr));
    }

    static constexpr zwlr_layer_surface_v1_listener listener { .configure = &configure, .closed = &closed };

    Told m_told;
    WaylandClient m_client;
    zwlr_layer_shell_v1* m_shell;
    Picture m_picture;
    wl_surface* m_surface = nullptr;
    zwlr_layer_surface_v1* m_role = nullptr;
};

} // namespace

int main(int argc, char** argv)
{
    BareLayerCover cover(option(argc, argv, "told", ""));
    std::puts("ready");
    std::fflush(stdout);
    cover.run();
    return EXIT_SUCCESS;
}
