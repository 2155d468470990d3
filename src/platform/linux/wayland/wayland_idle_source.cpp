#include "platform/linux/wayland/wayland_idle_source.h"

#include "platform/linux/desktop_idle_source.h"
#include "platform/linux/wayland/bus_helper.h"
#include "platform/linux/wayland/idle_notice.h"
#include "platform/linux/wayland/wayland_display.h"

namespace orvanta {

WaylandIdleSource::WaylandIdleSource() : m_notice(IdleNotice::find()) { }

WaylandIdleSource::~WaylandIdleSource() = default;

std::vector<double> WaylandIdleSource::secondsSinceLastEvents()
{
    if (m_notice) {
        if (const auto seconds = m_notice->seconds())
            return { *seconds };
        m_notice.reset();
    }
    if (const auto seconds = idleSecondsFromSession(m_session))
        return { *seconds };
    return {};
}

IdleProtocol findIdleProtocol()
{
    if (const auto display = WaylandDisplay::open()) {
        if (display->offers("ext_idle_notifier_v1"))
            return IdleProtocol::extIdleNotify;
        if (display->offers("org_kde_kwin_idle"))
            return IdleProtocol::kdeIdle;
    }
    const std::string address = sessionBusAddress();
    if (address.empty())
        return IdleProtocol::none;
    BoundedBus bus(address);
    if (!BusHelper(bus, "org.gnome.Mutter.IdleMonitor").owner().empty())
        return IdleProtocol::mutterIdleMonitor;
    return BusHelper(bus, "org.freedesktop.ScreenSaver").owner().empty() ? IdleProtocol::none : IdleProtocol::screenSaver;
}

} // namespace orvanta
