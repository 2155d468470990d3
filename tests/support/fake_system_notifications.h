#pragma once

#include "platform/portable/observers.h"
#include "platform/system_notifications.h"
#include "support/call_log.h"

#include <map>

namespace orvanta::testing {

/// A notify centre to which the test posts. The observers are told at once.
class FakeSystemNotifications : public SystemNotifications {
public:
    explicit FakeSystemNotifications(CallLog& log) : m_log(log) { }

    [[nodiscard]] Subscription observe(const QString& name, Callback<> delivered) override
    {
        m_log.add(QStringLiteral("notifications.observe ") + name);
        return m_observers[name].add(std::move(delivered));
    }

    void post(const QString& name)
    {
        if (const auto found = m_observers.find(name); found != m_observers.end())
            found->second.notify();
    }

    [[nodiscard]] bool isObserved() const
    {
        return std::ranges::any_of(m_observers, [](const auto& named) { return !named.second.isEmpty(); });
    }

private:
    CallLog& m_log;
    std::map<QString, Observers<>> m_observers;
};

} // namespace orvanta::testing
