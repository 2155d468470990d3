#pragma once

#include "platform/filter_manager.h"
#include "support/call_log.h"

#include <QStringList>

#include <deque>
#include <vector>

namespace orvanta::testing {

/// Preferences that are loaded and saved when the test says so: of each kind the oldest operation first, on the thread
/// that releases it.
class FakeFilterManager : public FilterManager {
public:
    /// Logs "filter.load" and "filter.save enabled|disabled [domains]" as they are asked for.
    explicit FakeFilterManager(CallLog& log) : m_log(log) { }

    void load(Callback<Result<FilterConfiguration>> loaded) override
    {
        m_log.add(QStringLiteral("filter.load"));
        ++m_loadCount;
        m_loads.push_back(std::move(loaded));
    }

    void save(const FilterConfiguration& configuration, Callback<Result<void>> done) override
    {
        const auto domains = configuration.providerConfiguration
            ? configuration.providerConfiguration->vendorConfiguration.value(QStringLiteral("blockedDomains")).toStringList()
            : QStringList();
        m_log.add(QStringLiteral("filter.save %1 [%2]")
                .arg(configuration.isEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled"), domains.join(u' ')));
        m_attempts.push_back(configuration);
        m_saves.push_back({ configuration, std::move(done) });
    }

    /// Hands out what is saved by now.
    void releaseLoad() { take(m_loads)(saved); }
    void failLoad(const QString& description) { take(m_loads)(std::unexpected(PlatformError { description })); }

    void releaseSave()
    {
        Save oldest = take(m_saves);
        saved = std::move(oldest.configuration);
        oldest.done({});
    }
    void failSave(const QString& description) { take(m_saves).done(std::unexpected(PlatformError { description })); }

    [[nodiscard]] std::size_t pendingLoads() const { return m_loads.size(); }
    [[nodiscard]] std::size_t pendingSaves() const { return m_saves.size(); }
    [[nodiscard]] int loadCount() const { return m_loadCount; }
    /// Every configuration that was to be saved, whatever became of it.
    [[nodiscard]] const std::vector<FilterConfiguration>& attempts() const { return m_attempts; }

    FilterConfiguration saved;

private:
    struct Save {
        FilterConfiguration configuration;
        Callback<Result<void>> done;
    };

    template <typename Operation>
    static Operation take(std::deque<Operation>& operations)
    {
        Operation oldest = std::move(operations.front());
        operations.pop_front();
        return oldest;
    }

    CallLog& m_log;
    int m_loadCount = 0;
    std::deque<Callback<Result<FilterConfiguration>>> m_loads;
    std::deque<Save> m_saves;
    std::vector<FilterConfiguration> m_attempts;
};

} // namespace orvanta::testing
