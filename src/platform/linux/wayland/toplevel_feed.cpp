#include "platform/linux/wayland/toplevel_feed.h"

#include "platform/linux/wayland/hyprland_commands.h"

#include "wlr-foreign-toplevel-management-unstable-v1-client.h"

#include <algorithm>
#include <wayland-client.h>

namespace orvanta {

namespace {

constexpr std::uint32_t knownManager = 3;
constexpr std::uint32_t knownOutput = 4; // the first that tells the connector's name
constexpr std::uint32_t outputNamesSince = 4;

} // namespace

struct ToplevelFeed::Listeners {
    static Toplevel& of(void* data) { return *static_cast<Toplevel*>(data); }

    static void toplevel(void* data, zwlr_foreign_toplevel_manager_v1* /*manager*/, zwlr_foreign_toplevel_handle_v1* handle)
    {
        auto& feed = *static_cast<ToplevelFeed*>(data);
        auto added = std::make_unique<Toplevel>();
        added->feed = &feed;
        added->handle = handle;
        added->window.number = ++feed.m_lastNumber;
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, added.get());
        feed.m_toplevels.push_back(std::move(added));
    }
    static void finished(void* data, zwlr_foreign_toplevel_manager_v1* manager)
    {
        auto& feed = *static_cast<ToplevelFeed*>(data);
        zwlr_foreign_toplevel_manager_v1_destroy(manager);
        feed.m_manager = nullptr;
    }

    static void title(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, const char* title) { of(data).title = QString::fromUtf8(title); }
    static void appId(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, const char* appId)
    {
        WindowTraits& traits = of(data).window.traits;
        // GTK 3 gives the program's name where others give the desktop file's.
        traits.instanceName = traits.className = traits.gtkApplicationId = traits.program = QByteArray(appId);
    }
    static void outputEnter(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_output* output) { of(data).outputs.push_back(output); }
    static void outputLeave(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_output* output) { std::erase(of(data).outputs, output); }
    static void state(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, wl_array* states)
    {
        const std::span all(static_cast<const std::uint32_t*>(states->data), states->size / sizeof(std::uint32_t));
        const auto has = [&all](std::uint32_t state) { return std::ranges::find(all, state) != all.end(); };
        of(data).isActivated = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
        of(data).window.isHidden = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
    }
    static void done(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/)
    {
        Toplevel& toplevel = of(data);
        const bool comesToTheFront = toplevel.isActivated && !toplevel.window.isActive;
        toplevel.window.isActive = toplevel.isActivated;
        if (comesToTheFront && toplevel.feed->m_isSettled)
            toplevel.feed->m_activations.push_back(toplevel.feed->described(toplevel));
    }
    static void closed(void* data, zwlr_foreign_toplevel_handle_v1* handle)
    {
        auto& toplevels = of(data).feed->m_toplevels;
        zwlr_foreign_toplevel_handle_v1_destroy(handle);
        std::erase_if(toplevels, [data](const auto& toplevel) { return toplevel.get() == data; });
    }
    static void parent(void* data, zwlr_foreign_toplevel_handle_v1* /*handle*/, zwlr_foreign_toplevel_handle_v1* parent)
    {
        of(data).isChild = parent != nullptr;
    }

    static void geometry(
        void*, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t, const char*, const char*, std::int32_t)
    {
    }
    static void mode(void*, wl_output*, std::uint32_t, std::int32_t, std::int32_t, std::int32_t) { }
    static void outputDone(void*, wl_output*) { }
    static void scale(void*, wl_output*, std::int32_t) { }
    static void outputName(void* data, wl_output* /*output*/, const char* name) { static_cast<Output*>(data)->name = QString::fromUtf8(name); }
    static void description(void*, wl_output*, const char*) { }

    static constexpr zwlr_foreign_toplevel_manager_v1_listener managerListener { .toplevel = &toplevel, .finished = &finished };
    static constexpr zwlr_foreign_toplevel_handle_v1_listener handleListener { .title = &title,
        .app_id = &appId,
        .output_enter = &outputEnter,
        .output_leave = &outputLeave,
        .state = &state,
        .done = &done,
        .closed = &closed,
        .parent = &parent };
    static constexpr wl_output_listener outputListener {
        .geometry = &geometry, .mode = &mode, .done = &outputDone, .scale = &scale, .name = &outputName, .description = &description
    };
};

ToplevelFeed::ToplevelFeed(WaylandDisplay& display)
    : m_display(display)
    , m_manager(display.bind<zwlr_foreign_toplevel_manager_v1>(zwlr_foreign_toplevel_manager_v1_interface, knownManager))
{
    if (!m_manager)
        return;
    followOutputs();
    zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &Listeners::managerListener, this);
    // The manager's answer names the windows, whose own words follow.
    m_isSettled = m_display.roundTrip() && m_display.roundTrip();
}

ToplevelFeed::~ToplevelFeed()
{
    for (const auto& toplevel : m_toplevels)
        zwlr_foreign_toplevel_handle_v1_destroy(toplevel->handle);
    for (const auto& output : m_outputs)
        wl_output_destroy(output->output);
    if (m_manager)
        zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
}

void ToplevelFeed::update()
{
    followOutputs();
    m_isSettled = m_isSettled || (m_manager && m_display.roundTrip());
}

void ToplevelFeed::followOutputs()
{
    const auto& globals = m_display.globals();
    std::erase_if(m_outputs, [&](const auto& known) {
        if (std::ranges::find(globals, known->global, &WaylandGlobal::name) != globals.end())
            return false;
        for (const auto& toplevel : m_toplevels)
            std::erase(toplevel->outputs, known->output);
        wl_output_destroy(known->output);
        return true;
    });
    for (const WaylandGlobal& global : globals) {
        const bool isKnown = std::ranges::any_of(m_outputs, [&global](const auto& known) { return known->global == global.name; });
        if (global.interface != wl_output_interface.name || global.version < outputNamesSince || isKnown)
            continue;
        auto added = std::make_unique<Output>();
        added->global = global.name;
        added->output = static_cast<wl_output*>(m_display.bindGlobal(global, wl_output_interface, knownOutput));
        wl_output_add_listener(added->output, &Listeners::outputListener, added.get());
        m_outputs.push_back(std::move(added));
    }
}

DesktopWindow ToplevelFeed::described(const Toplevel& toplevel) const
{
    DesktopWindow window = toplevel.window;
    for (const auto& output : m_outputs) {
        if (!toplevel.outputs.empty() && output->output == toplevel.outputs.back())
            window.output = output->name;
    }
    return window;
}

std::vector<DesktopWindow> ToplevelFeed::windows()
{
    std::vector<DesktopWindow> result;
    for (const auto& toplevel : m_toplevels)
        result.push_back(described(*toplevel));
    return result;
}

std::optional<DesktopWindow> ToplevelFeed::front()
{
    const auto active = std::ranges::find_if(m_toplevels, [](const auto& toplevel) { return toplevel->window.isActive; });
    return active == m_toplevels.end() ? std::nullopt : std::optional(described(**active));
}

std::vector<DesktopWindow> ToplevelFeed::takeActivations()
{
    return std::exchange(m_activations, {});
}

void ToplevelFeed::hide(std::span<const DesktopWindow> windows)
{
    if (const auto hyprland = hyprlandSocket()) {
        // What belongs to one application bears one application id.
        std::vector<QString> applicationIds;
        for (const DesktopWindow& window : windows)
            applicationIds.push_back(QString::fromUtf8(window.traits.className));
        hideByHyprland(*hyprland, applicationIds);
        return;
    }
    for (const auto& toplevel : m_toplevels) {
        if (std::ranges::find(windows, toplevel->window.number, &DesktopWindow::number) != windows.end())
            zwlr_foreign_toplevel_handle_v1_set_minimized(toplevel->handle);
    }
    m_display.roundTrip();
}

} // namespace orvanta
