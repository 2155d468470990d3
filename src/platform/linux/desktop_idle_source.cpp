#include "platform/linux/desktop_idle_source.h"

#include <xcb/screensaver.h>

#include <array>

namespace orvanta {

namespace {

constexpr std::chrono::milliseconds patience { 500 };

} // namespace

std::vector<double> DesktopIdleSource::secondsSinceLastEvents()
{
    if (const auto seconds = fromServer())
        return { *seconds };
    if (const auto seconds = idleSecondsFromSession(m_session))
        return { *seconds };
    return {};
}

std::optional<double> DesktopIdleSource::fromServer()
{
    if (m_connection && m_connection->isLost())
        m_connection.reset();
    if (!m_connection) {
        auto opened = X11Connection::open();
        if (!opened)
            return std::nullopt;
        m_connection = *std::move(opened);
    }
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(m_connection->raw(), &xcb_screensaver_id);
    if (!extension || !extension->present)
        return std::nullopt;
    ++m_roundTrips;
    const XcbPtr<xcb_screensaver_query_info_reply_t> info(
        xcb_screensaver_query_info_reply(m_connection->raw(), xcb_screensaver_query_info(m_connection->raw(), m_connection->root()), nullptr));
    return info ? std::optional(info->ms_since_user_input / 1000.0) : std::nullopt;
}

std::optional<double> idleSecondsFromSession(std::unique_ptr<BoundedBus>& session)
{
    if (session && session->isLost())
        session.reset();
    if (!session) {
        const std::string address = sessionBusAddress();
        if (address.empty())
            return std::nullopt;
        session = std::make_unique<BoundedBus>(address);
    }
    static const std::array questions {
        BusQuestion { "org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core", "org.gnome.Mutter.IdleMonitor", "GetIdletime", "(t)" },
        BusQuestion { "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "GetSessionIdleTime", "(u)" },
    };
    for (const BusQuestion& question : questions) {
        const Variant reply = session->ask(question, nullptr, std::chrono::steady_clock::now() + patience);
        if (!reply)
            continue;
        const Variant milliseconds(g_variant_get_child_value(reply.get(), 0));
        const bool isWide = g_variant_is_of_type(milliseconds.get(), G_VARIANT_TYPE_UINT64);
        return (isWide ? static_cast<double>(g_variant_get_uint64(milliseconds.get())) : g_variant_get_uint32(milliseconds.get())) / 1000.0;
    }
    return std::nullopt;
}

} // namespace orvanta
