#pragma once

#include "platform/extension_manager.h"
#include "support/call_log.h"

#include <deque>

namespace orvanta::testing {

/// A system that is asked about extensions, and answers when the test says so: the oldest request first, on the thread
/// that releases the answer.
class FakeExtensionManager : public ExtensionManager {
public:
    explicit FakeExtensionManager(CallLog& log) : m_log(log) { }

    void requestProperties(const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed) override
    {
        m_log.add(QStringLiteral("extension.requestProperties ") + identifier);
        m_properties.push_back({ std::move(found), std::move(failed) });
    }

    void activate(const QString& identifier, ActivationEvents events) override
    {
        m_log.add(QStringLiteral("extension.activate ") + identifier);
        m_activations.push_back(std::move(events));
    }

    [[nodiscard]] QString hostBundlePath() override { return bundlePath; }

    void find(const std::vector<ExtensionProperties>& properties) { take(m_properties).found(properties); }
    void failProperties(const QString& description) { take(m_properties).failed({ description }); }

    [[nodiscard]] ReplacementAction replace() { return m_activations.front().replacing(); }
    void askForApproval() { m_activations.front().needsUserApproval(); }
    void finish(ActivationResult result) { take(m_activations).finished(result); }
    void failActivation(const QString& description) { take(m_activations).failed({ description }); }

    [[nodiscard]] std::size_t pendingProperties() const { return m_properties.size(); }
    [[nodiscard]] std::size_t pendingActivations() const { return m_activations.size(); }

    QString bundlePath = QStringLiteral("/Applications/Orvanta Focus.app");

private:
    struct PropertiesRequest {
        Callback<std::vector<ExtensionProperties>> found;
        Callback<PlatformError> failed;
    };

    template <typename Request>
    static Request take(std::deque<Request>& requests)
    {
        Request oldest = std::move(requests.front());
        requests.pop_front();
        return oldest;
    }

    CallLog& m_log;
    std::deque<PropertiesRequest> m_properties;
    std::deque<ActivationEvents> m_activations;
};

} // namespace orvanta::testing
