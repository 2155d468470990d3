#pragma once

#include "filter/linux/content_filter.h"
#include "filter/linux/preferences.h"
#include "filter/linux/rules_watch.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <chrono>
#include <memory>
#include <string>

namespace orvanta::filter {

/// The daemon on the system bus: who may ask what, what is stored, and when the filter is on. One thread, that of the
/// event loop; the packets have their own.
class FilterService {
public:
    struct Options {
        std::string stateFolder = "/var/lib/orvanta-focus";
        std::uint16_t queue = 47653;
        MarkBits bits {};
    };

    [[nodiscard]] static std::expected<std::unique_ptr<FilterService>, std::string> start(sd_event* loop, const Options& options);
    ~FilterService();

    FilterService(const FilterService&) = delete;
    FilterService& operator=(const FilterService&) = delete;

    // What the bus calls. `self` is the service.
    static int queryProperties(sd_bus_message* call, void* self, sd_bus_error* error);
    static int activate(sd_bus_message* call, void* self, sd_bus_error* error);
    static int loadPreferences(sd_bus_message* call, void* self, sd_bus_error* error);
    static int savePreferences(sd_bus_message* call, void* self, sd_bus_error* error);
    static int loadDnsProxy(sd_bus_message* call, void* self, sd_bus_error* error);
    static int removeDnsProxy(sd_bus_message* call, void* self, sd_bus_error* error);
    static int statistics(sd_bus_message* call, void* self, sd_bus_error* error);

private:
    enum class Permission { activate, configure };
    struct Question;

    FilterService(Options options, int refusals, RulesWatch rulesWatch);
    [[nodiscard]] std::expected<void, std::string> openBus();
    [[nodiscard]] std::expected<void, std::string> connect(sd_event* loop);
    [[nodiscard]] std::expected<void, std::string> apply();

    /// Has `done` called with the call once polkit lets the caller; answers with an error otherwise.
    int permitted(sd_bus_message* call, Permission permission, int (*done)(FilterService&, sd_bus_message*));
    static int takePermission(sd_bus_message* answer, void* question, sd_bus_error* error);
    static int activateNow(FilterService& self, sd_bus_message* call);
    static int saveNow(FilterService& self, sd_bus_message* call);
    static int removeDnsProxyNow(FilterService& self, sd_bus_message* call);
    [[nodiscard]] std::expected<void, std::string> store(StoredState next);

    [[nodiscard]] bool works() const;
    static int takeRuleChanges(sd_event_source* source, int descriptor, std::uint32_t events, void* self);
    void repairRules();
    static int takeRefusals(sd_event_source* source, int descriptor, std::uint32_t events, void* self);
    static int checkPackets(sd_event_source* source, std::uint64_t now, void* self);

    Options m_options;
    int m_refusals;
    StateFile m_file;
    StoredState m_state;
    ContentFilter m_filter;
    RulesWatch m_rulesWatch;
    bool m_mayNeedRepair = false;
    bool m_cannotRepair = false;
    sd_bus* m_bus = nullptr;
    sd_event_source* m_watch = nullptr;
    std::chrono::steady_clock::time_point m_lastRefusal {};
    std::chrono::steady_clock::time_point m_lastAnnouncement {};
    std::uint64_t m_lastHeartbeat = 0;
    int m_silentChecks = 0;
};

} // namespace orvanta::filter
