#include "filter/linux/filter_service.h"

#include "filter/linux/preferences_message.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <random>
#include <utility>

namespace orvanta::filter {

namespace {

constexpr const char* busName = "com.orvanta.focus.OrvantaFocusDNSProxy";
constexpr const char* objectPath = "/com/orvanta/focus/OrvantaFocusDNSProxy";
constexpr const char* interfaceName = "com.orvanta.focus.Filter1";
constexpr const char* blockedDomainAttempt = "com.orvanta.focus.blocked-domain-attempt";
constexpr const char* extensionChanged = "com.orvanta.focus.extension-changed";

constexpr const char* approvalNeeded = "com.orvanta.focus.Error.ApprovalNeeded";
constexpr const char* notPermitted = "org.freedesktop.DBus.Error.AccessDenied";
constexpr const char* unknownExtension = "com.orvanta.focus.Error.UnknownExtension";
constexpr const char* malformed = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char* failed = "org.freedesktop.DBus.Error.Failed";

/// A page makes some ten refused attempts within a moment; they are one visit, which is announced once. After a pause it is
/// another one, say of the user's after one that some program made by itself. Of attempts without a pause, one is
/// announced from time to time: the user's may be among them.
constexpr std::chrono::milliseconds betweenVisits { 250 };
constexpr std::chrono::seconds longestSilence { 1 };

constexpr std::uint64_t checkInterval = 1'000'000; // microseconds
constexpr int mostSilentChecks = 10;
constexpr std::uint64_t untilTheUserHasAnswered = UINT64_MAX;

/// For a list that no earlier run knew: connections that somebody marked must not pass for ones that it allowed.
std::uint8_t someGeneration()
{
    return static_cast<std::uint8_t>(1 + std::random_device()() % lastGeneration);
}

bool filters(const StoredState& state)
{
    return state.activated && state.preferences.asksToFilter();
}

FilterService& service(void* self)
{
    return *static_cast<FilterService*>(self);
}

std::string reason(const char* what, int status)
{
    return std::string(what) + ": " + std::strerror(-status);
}

int answerError(sd_bus_message* call, const char* name, const std::string& text)
{
    return sd_bus_reply_method_errorf(call, name, "%s", text.c_str());
}

const sd_bus_vtable methods[]
    = { SD_BUS_VTABLE_START(0), SD_BUS_METHOD("QueryProperties", "s", "ab", &FilterService::queryProperties, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("Activate", "s", "u", &FilterService::activate, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("LoadPreferences", "", "a{sv}", &FilterService::loadPreferences, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("SavePreferences", "a{sv}", "", &FilterService::savePreferences, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("LoadDnsProxy", "", "s", &FilterService::loadDnsProxy, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("RemoveDnsProxy", "", "", &FilterService::removeDnsProxy, SD_BUS_VTABLE_UNPRIVILEGED),
          SD_BUS_METHOD("Statistics", "", "a{st}", &FilterService::statistics, SD_BUS_VTABLE_UNPRIVILEGED), SD_BUS_SIGNAL("Notification", "s", 0),
          SD_BUS_VTABLE_END };

} // namespace

/// A call that waits for polkit's answer.
struct FilterService::Question {
    FilterService* self;
    sd_bus_message* call;
    int (*done)(FilterService&, sd_bus_message*);

    Question(FilterService* itsService, sd_bus_message* itsCall, int (*whatFollows)(FilterService&, sd_bus_message*))
        : self(itsService)
        , call(sd_bus_message_ref(itsCall))
        , done(whatFollows)
    {
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question() { sd_bus_message_unref(call); }
};

std::expected<std::unique_ptr<FilterService>, std::string> FilterService::start(sd_event* loop, const Options& options)
{
    const int refusals = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (refusals < 0)
        return std::unexpected(reason("no event descriptor", -errno));
    auto rulesWatch = RulesWatch::open();
    if (!rulesWatch) {
        close(refusals);
        return std::unexpected(rulesWatch.error());
    }
    std::unique_ptr<FilterService> self(new FilterService(options, refusals, *std::move(rulesWatch)));
    auto state = self->m_file.read();
    if (state)
        self->m_state = *std::move(state);
    else if (state.error().isSetAside)
        std::fprintf(stderr, "orvanta-filterd: %s; it is set aside\n", state.error().reason.c_str());
    else
        return std::unexpected(state.error().reason);
    if (self->m_state.generation == 0)
        self->m_state.generation = someGeneration();
    // The rules belong to whoever has the name; another one that runs keeps both.
    if (const auto alone = self->openBus(); !alone)
        return std::unexpected(alone.error());
    // An earlier run that was killed may have left its rules; ours take their place, or nothing does.
    if (const auto applied = self->apply(); !applied) {
        (void)FilterRules::remove();
        return std::unexpected(applied.error());
    }
    if (const auto connected = self->connect(loop); !connected)
        return std::unexpected(connected.error());
    return self;
}

FilterService::FilterService(Options options, int refusals, RulesWatch rulesWatch)
    : m_options(std::move(options))
    , m_refusals(refusals)
    , m_file(m_options.stateFolder)
    , m_filter(m_options.queue, m_options.bits, refusals)
    , m_rulesWatch(std::move(rulesWatch))
{
}

FilterService::~FilterService()
{
    sd_event_source_unref(m_watch);
    sd_bus_flush_close_unref(m_bus);
    if (m_filter.queue())
        (void)m_filter.switchOff(); // before the descriptor goes that its thread writes to
    close(m_refusals);
}

std::expected<void, std::string> FilterService::openBus()
{
    if (const int status = sd_bus_open_system(&m_bus); status < 0)
        return std::unexpected(reason("the system bus", status));
    const int owned = sd_bus_call_method(
        m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner", nullptr, nullptr, "s", busName);
    if (owned >= 0)
        return std::unexpected("another one runs already");
    return {};
}

std::expected<void, std::string> FilterService::connect(sd_event* loop)
{
    int status = sd_bus_add_object_vtable(m_bus, nullptr, objectPath, interfaceName, methods, this);
    if (status >= 0)
        status = sd_bus_request_name(m_bus, busName, 0);
    if (status >= 0)
        status = sd_bus_attach_event(m_bus, loop, SD_EVENT_PRIORITY_NORMAL);
    if (status < 0)
        return std::unexpected(reason("the system bus", status));
    status = sd_event_add_io(loop, nullptr, m_refusals, EPOLLIN, &FilterService::takeRefusals, this);
    if (status >= 0)
        status = sd_event_add_io(loop, nullptr, m_rulesWatch.descriptor(), EPOLLIN, &FilterService::takeRuleChanges, this);
    std::uint64_t now = 0;
    if (status >= 0)
        status = sd_event_now(loop, CLOCK_MONOTONIC, &now);
    if (status >= 0)
        status = sd_event_add_time(loop, &m_watch, CLOCK_MONOTONIC, now + checkInterval, 0, &FilterService::checkPackets, this);
    if (status >= 0)
        status = sd_event_source_set_enabled(m_watch, SD_EVENT_ON);
    if (status < 0)
        return std::unexpected(reason("the event loop", status));
    return {};
}

/// Brings the kernel in step with what is stored.
std::expected<void, std::string> FilterService::apply()
{
    if (filters(m_state))
        return m_filter.switchOn(m_state.preferences.blockedDomains, m_state.generation);
    return m_filter.switchOff();
}

std::expected<void, std::string> FilterService::store(StoredState next)
{
    // Also when it is switched on with the list that it had: while nobody looked, a connection may have taken over the ports,
    // and with them the mark, of one that was allowed. So all are asked about once more.
    const bool isSwitchedOn = filters(next) && !m_filter.queue();
    if (isSwitchedOn || next.preferences.blockedDomains != m_state.preferences.blockedDomains)
        next.generation = generationAfter(m_state.generation);
    if (const auto written = m_file.write(next); !written)
        return written;
    std::swap(m_state, next);
    auto applied = apply();
    if (!applied) {
        // What was stored before still holds, as far as it can.
        std::swap(m_state, next);
        (void)m_file.write(m_state);
        (void)apply();
    }
    // A long list passes through several forms on its way here; what they took goes back.
    next = {};
    malloc_trim(0);
    return applied;
}

/// Whether what is stored is also what the kernel does.
bool FilterService::works() const
{
    return !m_state.preferences.asksToFilter() || (m_filter.queue() && !m_cannotRepair);
}

int FilterService::queryProperties(sd_bus_message* call, void* self, sd_bus_error*)
{
    const char* identifier = nullptr;
    if (const int status = sd_bus_message_read(call, "s", &identifier); status < 0)
        return status;
    if (std::strcmp(identifier, busName) != 0)
        return sd_bus_reply_method_return(call, "ab", 0);
    return sd_bus_reply_method_return(call, "ab", 1, static_cast<int>(service(self).m_state.activated && service(self).works()));
}

int FilterService::activate(sd_bus_message* call, void* self, sd_bus_error*)
{
    const char* identifier = nullptr;
    if (const int status = sd_bus_message_read(call, "s", &identifier); status < 0)
        return status;
    if (std::strcmp(identifier, busName) != 0)
        return answerError(call, unknownExtension, "There is no extension of that name");
    return service(self).permitted(call, Permission::activate, &FilterService::activateNow);
}

int FilterService::activateNow(FilterService& self, sd_bus_message* call)
{
    StoredState next = self.m_state;
    next.activated = true;
    if (const auto stored = self.store(std::move(next)); !stored)
        return answerError(call, failed, stored.error());
    constexpr std::uint32_t completed = 0;
    return sd_bus_reply_method_return(call, "u", completed);
}

int FilterService::loadPreferences(sd_bus_message* call, void* self, sd_bus_error*)
{
    sd_bus_message* answer = nullptr;
    int status = sd_bus_message_new_method_return(call, &answer);
    if (status >= 0)
        status = appendPreferences(answer, service(self).m_state.preferences);
    if (status >= 0)
        status = sd_bus_send(nullptr, answer, nullptr);
    sd_bus_message_unref(answer);
    return status;
}

int FilterService::savePreferences(sd_bus_message* call, void* self, sd_bus_error*)
{
    return service(self).permitted(call, Permission::configure, &FilterService::saveNow);
}

int FilterService::saveNow(FilterService& self, sd_bus_message* call)
{
    StoredState next {
        .activated = self.m_state.activated, .dnsProxyProvider = self.m_state.dnsProxyProvider, .generation = self.m_state.generation
    };
    if (readPreferences(call, next.preferences) < 0)
        return answerError(call, malformed, "The preferences cannot be read");
    if (const auto stored = self.store(std::move(next)); !stored)
        return answerError(call, failed, stored.error());
    return sd_bus_reply_method_return(call, "");
}

int FilterService::loadDnsProxy(sd_bus_message* call, void* self, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "s", service(self).m_state.dnsProxyProvider.c_str());
}

int FilterService::removeDnsProxy(sd_bus_message* call, void* self, sd_bus_error*)
{
    return service(self).permitted(call, Permission::configure, &FilterService::removeDnsProxyNow);
}

int FilterService::removeDnsProxyNow(FilterService& self, sd_bus_message* call)
{
    StoredState next = self.m_state;
    next.dnsProxyProvider.clear();
    if (const auto stored = self.store(std::move(next)); !stored)
        return answerError(call, failed, stored.error());
    return sd_bus_reply_method_return(call, "");
}

int FilterService::statistics(sd_bus_message* call, void* self, sd_bus_error*)
{
    const PacketQueue* queue = service(self).m_filter.queue();
    const std::uint64_t isActive = queue && service(self).works() ? 1 : 0;
    static const PacketCounters none;
    const PacketCounters& counters = queue ? queue->counters() : none;
    const auto figure = [](const std::atomic<std::uint64_t>& counter) { return counter.load(); };
    return sd_bus_reply_method_return(call, "a{st}", 8, "active", isActive, "seen", figure(counters.seen), "refused", figure(counters.refused),
        "closed", figure(counters.closed), "allowed", figure(counters.allowed), "undecided", figure(counters.undecided), "exchanged",
        figure(counters.exchanged), "missed", service(self).m_filter.missed());
}

int FilterService::permitted(sd_bus_message* call, Permission permission, int (*done)(FilterService&, sd_bus_message*))
{
    // Root may do all of this without us; nobody has to be asked.
    sd_bus_creds* credentials = nullptr;
    uid_t caller = static_cast<uid_t>(-1);
    const bool isKnown = sd_bus_query_sender_creds(call, SD_BUS_CREDS_EUID, &credentials) >= 0 && sd_bus_creds_get_euid(credentials, &caller) >= 0;
    sd_bus_creds_unref(credentials);
    if (isKnown && caller == 0)
        return done(*this, call);

    const char* action = permission == Permission::activate ? "com.orvanta.focus.filter.activate" : "com.orvanta.focus.filter.configure";
    const bool mayAsk = permission == Permission::activate && sd_bus_message_get_allow_interactive_authorization(call) > 0;
    sd_bus_message* question = nullptr;
    int status = sd_bus_message_new_method_call(m_bus, &question, "org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
        "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization");
    if (status >= 0)
        status = sd_bus_message_append(
            question, "(sa{sv})sa{ss}us", "system-bus-name", 1, "name", "s", sd_bus_message_get_sender(call), action, 0, mayAsk ? 1U : 0U, "");
    if (status >= 0) {
        auto waiting = std::make_unique<Question>(this, call, done);
        status = sd_bus_call_async(m_bus, nullptr, question, &FilterService::takePermission, waiting.get(), mayAsk ? untilTheUserHasAnswered : 0);
        if (status >= 0)
            (void)waiting.release();
    }
    sd_bus_message_unref(question);
    return status < 0 ? status : 1;
}

int FilterService::takePermission(sd_bus_message* answer, void* question, sd_bus_error*)
{
    const std::unique_ptr<Question> waiting(static_cast<Question*>(question));
    int isAuthorised = 0;
    int isChallenge = 0;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0 || sd_bus_message_enter_container(answer, 'r', "bba{ss}") < 0
        || sd_bus_message_read(answer, "bb", &isAuthorised, &isChallenge) < 0)
        return answerError(waiting->call, notPermitted, "Whether you may do this cannot be found out");
    if (isAuthorised)
        return waiting->done(*waiting->self, waiting->call);
    if (isChallenge && sd_bus_message_get_allow_interactive_authorization(waiting->call) <= 0)
        return answerError(waiting->call, approvalNeeded, "An administrator has to approve website protection");
    return answerError(waiting->call, notPermitted, "Website protection was not approved");
}

int FilterService::takeRuleChanges(sd_event_source*, int, std::uint32_t, void* self)
{
    // Looked at with the next check: whoever replaces rules does so in several steps.
    if (service(self).m_rulesWatch.take())
        service(self).m_mayNeedRepair = true;
    return 0;
}

void FilterService::repairRules()
{
    if (!std::exchange(m_mayNeedRepair, false))
        return;
    const auto repaired = m_filter.repair();
    if (std::exchange(m_cannotRepair, !repaired) == repaired.has_value())
        (void)sd_bus_emit_signal(m_bus, objectPath, interfaceName, "Notification", "s", extensionChanged);
    if (!repaired) {
        std::fprintf(stderr, "orvanta-filterd: the rules are gone and cannot be put back: %s\n", repaired.error().c_str());
        m_mayNeedRepair = true; // once more, with the next check
    } else if (*repaired) {
        std::fprintf(stderr, "orvanta-filterd: somebody took the rules away; they are put back\n");
    }
}

int FilterService::takeRefusals(sd_event_source*, int descriptor, std::uint32_t, void* self)
{
    std::uint64_t refusals = 0;
    if (read(descriptor, &refusals, sizeof refusals) != sizeof refusals)
        return 0;
    FilterService& filter = service(self);
    const auto now = std::chrono::steady_clock::now();
    const auto pause = now - std::exchange(filter.m_lastRefusal, now);
    if (pause < betweenVisits && now - filter.m_lastAnnouncement < longestSilence)
        return 0;
    filter.m_lastAnnouncement = now;
    return sd_bus_emit_signal(filter.m_bus, objectPath, interfaceName, "Notification", "s", blockedDomainAttempt);
}

/// A thread that hangs would hold every packet back. Ending the process lets them pass, and systemd starts it again.
int FilterService::checkPackets(sd_event_source* source, std::uint64_t, void* self)
{
    FilterService& filter = service(self);
    const std::uint64_t heartbeat = filter.m_filter.queue() ? filter.m_filter.queue()->heartbeat() : 0;
    filter.m_silentChecks = filter.m_filter.queue() && heartbeat == filter.m_lastHeartbeat ? filter.m_silentChecks + 1 : 0;
    filter.m_lastHeartbeat = heartbeat;
    if (filter.m_silentChecks == mostSilentChecks)
        std::abort();
    filter.repairRules();
    // From this moment on: checks that a busy loop missed are not made up for, since they would find nothing new.
    return sd_event_source_set_time_relative(source, checkInterval);
}

} // namespace orvanta::filter
