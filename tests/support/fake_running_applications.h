#pragma once

#include "platform/running_applications.h"
#include "support/call_log.h"

#include <algorithm>
#include <vector>

namespace orvanta::testing {

/// Applications that the test starts, brings to the front and ends. Hiding the one in front brings the one behind it there.
class FakeRunningApplications : public RunningApplications {
public:
    /// Every hide() goes into `log` as "hide <identifier>".
    explicit FakeRunningApplications(CallLog& log) : m_log(log) { }

    [[nodiscard]] std::optional<RunningApplication> frontmost() override
    {
        return m_order.empty() ? std::nullopt : std::optional(m_running[m_order.back()].application);
    }

    [[nodiscard]] std::vector<RunningApplication> all() override
    {
        std::vector<RunningApplication> applications;
        applications.reserve(m_running.size());
        for (const Instance& instance : m_running)
            applications.push_back(instance.application);
        return applications;
    }

    void hide(const QString& bundleIdentifier) override
    {
        m_log.add(QStringLiteral("hide ") + bundleIdentifier);
        for (std::size_t place = 0; place < m_running.size(); ++place) {
            if (m_running[place].application.bundleIdentifier == bundleIdentifier) {
                m_running[place].isHidden = true;
                std::erase(m_order, place);
            }
        }
    }

    /// Starts an application, in front of the others.
    void start(const RunningApplication& application)
    {
        m_running.push_back({ .application = application });
        m_order.push_back(m_running.size() - 1);
    }

    /// Brings the applications that bear `bundleIdentifier` to the front, hidden ones too.
    void bringToFront(const std::optional<QString>& bundleIdentifier)
    {
        for (std::size_t place = 0; place < m_running.size(); ++place) {
            if (m_running[place].application.bundleIdentifier == bundleIdentifier) {
                m_running[place].isHidden = false;
                std::erase(m_order, place);
                m_order.push_back(place);
            }
        }
    }

    /// Leaves the keyboard to no application.
    void leaveNothingInFront() { m_order.clear(); }

    [[nodiscard]] bool isHidden(const QString& bundleIdentifier) const
    {
        return std::ranges::any_of(m_running,
            [&bundleIdentifier](const Instance& instance) { return instance.isHidden && instance.application.bundleIdentifier == bundleIdentifier; });
    }

private:
    struct Instance {
        RunningApplication application;
        bool isHidden = false;
    };

    CallLog& m_log;
    std::vector<Instance> m_running;  ///< in the order in which they were started
    std::vector<std::size_t> m_order; ///< places in m_running of what is visible, the front last
};

} // namespace orvanta::testing
