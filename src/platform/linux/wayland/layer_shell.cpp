#include "platform/linux/wayland/layer_shell.h"

#include "wlr-layer-shell-unstable-v1-client.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <cstring>
#include <wayland-client.h>

namespace orvanta {

namespace {

constexpr std::uint32_t knownVersion = 4;
constexpr std::uint32_t destroySince = 3;

struct FoundShell {
    std::uint32_t name = 0;
    std::uint32_t version = 0;
};

void noteGlobal(void* data, wl_registry* /*registry*/, std::uint32_t name, const char* interface, std::uint32_t version)
{
    if (std::strcmp(interface, zwlr_layer_shell_v1_interface.name) == 0)
        *static_cast<FoundShell*>(data) = { .name = name, .version = std::min(version, knownVersion) };
}
void forgetGlobal(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) { }

constexpr wl_registry_listener registryListener { .global = &noteGlobal, .global_remove = &forgetGlobal };

} // namespace

struct LayerSurface::Listeners {
    static void configure(void* data, zwlr_layer_surface_v1* role, std::uint32_t serial, std::uint32_t /*width*/, std::uint32_t /*height*/)
    {
        zwlr_layer_surface_v1_ack_configure(role, serial);
        static_cast<LayerSurface*>(data)->m_configured();
    }
    static void closed(void* data, zwlr_layer_surface_v1* /*role*/) { static_cast<LayerSurface*>(data)->m_closed(); }

    static constexpr zwlr_layer_surface_v1_listener listener { .configure = &configure, .closed = &closed };
};

LayerSurface::LayerSurface(zwlr_layer_surface_v1* role, wl_surface* surface, Callback<> configured, Callback<> closed)
    : m_role(role)
    , m_surface(surface)
    , m_configured(std::move(configured))
    , m_closed(std::move(closed))
{
    constexpr std::uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT
        | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
    constexpr std::int32_t overPanelsToo = -1;
    zwlr_layer_surface_v1_add_listener(role, &Listeners::listener, this);
    zwlr_layer_surface_v1_set_size(role, 0, 0);
    zwlr_layer_surface_v1_set_anchor(role, allEdges);
    zwlr_layer_surface_v1_set_exclusive_zone(role, overPanelsToo);
    zwlr_layer_surface_v1_set_keyboard_interactivity(role, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
    wl_surface_commit(surface);
}

LayerSurface::~LayerSurface()
{
    zwlr_layer_surface_v1_destroy(m_role);
}

void LayerSurface::takeKeyboard()
{
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE);
    wl_surface_commit(m_surface);
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
    wl_surface_commit(m_surface);
}

std::unique_ptr<LayerShell> LayerShell::find()
{
    if (!QGuiApplication::platformName().startsWith(QStringLiteral("wayland")))
        return nullptr;
    auto* display = static_cast<wl_display*>(QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
    if (!display)
        return nullptr;

    // A queue of its own, so that looking for the shell does not run what Qt has queued.
    wl_event_queue* queue = wl_display_create_queue(display);
    auto* wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue);
    wl_registry* registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);
    FoundShell found;
    wl_registry_add_listener(registry, &registryListener, &found);
    wl_display_roundtrip_queue(display, queue);
    zwlr_layer_shell_v1* shell = nullptr;
    if (found.name != 0)
        shell = static_cast<zwlr_layer_shell_v1*>(wl_registry_bind(registry, found.name, &zwlr_layer_shell_v1_interface, found.version));
    wl_registry_destroy(registry);
    if (!shell) {
        wl_event_queue_destroy(queue);
        return nullptr;
    }
    return std::unique_ptr<LayerShell>(new LayerShell(shell, queue));
}

LayerShell::~LayerShell()
{
    if (zwlr_layer_shell_v1_get_version(m_shell) >= destroySince)
        zwlr_layer_shell_v1_destroy(m_shell);
    else
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(m_shell));
    wl_event_queue_destroy(m_queue);
}

std::unique_ptr<LayerSurface> LayerShell::cover(QWindow& window, QScreen* display, Callback<> configured, Callback<> closed) const
{
    QPlatformNativeInterface* native = QGuiApplication::platformNativeInterface();
    auto* surface = static_cast<wl_surface*>(native->nativeResourceForWindow("surface", &window));
    if (!surface)
        return nullptr;
    auto* output = display ? static_cast<wl_output*>(native->nativeResourceForScreen("output", display)) : nullptr;
    zwlr_layer_surface_v1* role = zwlr_layer_shell_v1_get_layer_surface(m_shell, surface, output, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, layerNamespace);
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(role), nullptr); // Qt's; nothing is said before the first commit
    return std::make_unique<LayerSurface>(role, surface, std::move(configured), std::move(closed));
}

} // namespace orvanta
