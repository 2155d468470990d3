#include "platform/linux/wayland/bus_helper.h"

#include <chrono>

namespace orvanta {

BoundedBus::Deadline BusHelper::soon()
{
    constexpr std::chrono::milliseconds patience { 1000 };
    return std::chrono::steady_clock::now() + patience;
}

BusHelper::BusHelper(BoundedBus& bus, std::string name) : m_bus(bus), m_name(std::move(name))
{
    GDBusConnection* connection = m_bus.connection(soon());
    if (!connection)
        return;
    m_bus.listen([this, connection] {
        m_subscription = g_dbus_connection_signal_subscribe(connection, "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
            "/org/freedesktop/DBus", m_name.c_str(), G_DBUS_SIGNAL_FLAGS_NONE, &BusHelper::ownerChanged, this, nullptr);
    });
    const BusQuestion question { "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner", "(s)" };
    if (const Variant reply = m_bus.ask(question, g_variant_new("(s)", m_name.c_str()), soon())) {
        const char* owner = nullptr;
        g_variant_get(reply.get(), "(&s)", &owner);
        m_owner = owner;
    }
}

BusHelper::~BusHelper()
{
    // Lost or not, the subscription refers to us.
    if (GDBusConnection* connection = m_subscription != 0 ? m_bus.madeConnection() : nullptr)
        g_dbus_connection_signal_unsubscribe(connection, m_subscription);
}

void BusHelper::ownerChanged(GDBusConnection* /*connection*/, const char* /*sender*/, const char* /*path*/, const char* /*interface*/,
    const char* /*signal*/, GVariant* arguments, gpointer helper)
{
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    g_variant_get(arguments, "(&s&s&s)", &name, &before, &after);
    auto& self = *static_cast<BusHelper*>(helper);
    if (self.m_name == name)
        self.m_owner = after;
}

} // namespace orvanta
