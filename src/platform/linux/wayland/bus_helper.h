#pragma once

#include "platform/linux/bounded_bus.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvanta {

/// Follows who owns a name on the session's bus; starts nobody. On the thread of its bus, which it must not outlive.
class BusHelper {
public:
    BusHelper(BoundedBus& bus, std::string name);
    ~BusHelper();
    BusHelper(const BusHelper&) = delete;
    BusHelper& operator=(const BusHelper&) = delete;

    [[nodiscard]] BoundedBus& bus() const { return m_bus; }
    /// The unique name of the owner, as far as the bus has told by the last dispatch(); empty if there is none.
    [[nodiscard]] const std::string& owner() const { return m_owner; }

    /// A moment's patience, from now.
    [[nodiscard]] static BoundedBus::Deadline soon();

private:
    static void ownerChanged(GDBusConnection* connection, const char* sender, const char* path, const char* interface, const char* signal,
        GVariant* arguments, gpointer helper);

    BoundedBus& m_bus;
    std::string m_name;
    std::string m_owner;
    guint m_subscription = 0;
};

} // namespace orvanta
