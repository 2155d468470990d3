#include "platform/linux/bounded_bus.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

namespace orvanta {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// What is under way is cancelled at the end; this is for whatever does not notice.
constexpr milliseconds patienceAtTheEnd { 500 };

/// Has what is begun within it report to the context.
class ThreadDefault {
public:
    explicit ThreadDefault(GMainContext* context) : m_context(context) { g_main_context_push_thread_default(context); }
    ~ThreadDefault() { g_main_context_pop_thread_default(m_context); }
    ThreadDefault(const ThreadDefault&) = delete;
    ThreadDefault& operator=(const ThreadDefault&) = delete;

private:
    GMainContext* m_context;
};

gboolean expire(gpointer isExpired)
{
    *static_cast<bool*>(isExpired) = true;
    return G_SOURCE_REMOVE;
}

template <typename Operation>
std::shared_ptr<Operation> taken(gpointer data)
{
    const std::unique_ptr<std::shared_ptr<Operation>> holder(static_cast<std::shared_ptr<Operation>*>(data));
    (*holder)->isDone = true;
    return *holder;
}

} // namespace

BoundedBus::BoundedBus(std::string address) : m_context(g_main_context_new()), m_cancellable(g_cancellable_new()), m_address(std::move(address)) { }

BoundedBus::~BoundedBus()
{
    if (m_isWatched)
        g_main_context_release(m_context.get());
    g_cancellable_cancel(m_cancellable.get());
    const auto deadline = steady_clock::now() + patienceAtTheEnd;
    while (isAnyOpen() && steady_clock::now() < deadline)
        for (const auto& operation : { m_connecting, m_unanswered.empty() ? nullptr : m_unanswered.begin()->second }) {
            if (operation && !operation->isDone)
                waitFor(*operation, deadline);
            takeLateAnswers();
        }
}

Variant BoundedBus::ask(const BusQuestion& question, GVariant* arguments, Deadline deadline)
{
    const Variant held(arguments ? g_variant_ref_sink(arguments) : nullptr);
    takeLateAnswers();
    GDBusConnection* connection = this->connection(deadline);
    if (!connection || m_unanswered.contains(question.destination) || steady_clock::now() >= deadline)
        return nullptr;

    const auto operation = std::make_shared<Operation>();
    {
        const ThreadDefault here(m_context.get());
        g_dbus_connection_call(connection, question.destination.c_str(), question.path.c_str(), question.interface, question.method, held.get(),
            G_VARIANT_TYPE(question.replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, m_cancellable.get(), &BoundedBus::answered,
            new std::shared_ptr<Operation>(operation));
    }
    waitFor(*operation, deadline);
    if (!operation->isDone)
        m_unanswered.emplace(question.destination, operation);
    return std::move(operation->reply);
}

GDBusConnection* BoundedBus::connection(Deadline deadline)
{
    if (!m_connecting) {
        connect();
        waitFor(*m_connecting, deadline);
    }
    GDBusConnection* connection = m_connecting->connection.get();
    return connection && !g_dbus_connection_is_closed(connection) ? connection : nullptr;
}

bool BoundedBus::waitUntil(const std::function<bool()>& isSo, Deadline deadline)
{
    takeLateAnswers();
    while (!isSo()) {
        if (isLost() || steady_clock::now() >= deadline)
            return false;
        iterateOnce(deadline);
    }
    return true;
}

int BoundedBus::descriptor()
{
    // What arrives wakes a context only if it has an owner.
    if (!std::exchange(m_isWatched, true))
        g_main_context_acquire(m_context.get());
    std::array<GPollFD, 1> wakeUp {};
    gint timeout = 0;
    gint priority = 0;
    g_main_context_prepare(m_context.get(), &priority);
    g_main_context_query(m_context.get(), G_MAXINT, &timeout, wakeUp.data(), wakeUp.size());
    return wakeUp.front().fd;
}

bool BoundedBus::isLost() const
{
    if (!m_connecting || !m_connecting->isDone)
        return false;
    return !m_connecting->connection || g_dbus_connection_is_closed(m_connecting->connection.get());
}

void BoundedBus::connect()
{
    m_connecting = std::make_shared<Operation>();
    const ThreadDefault here(m_context.get());
    g_dbus_connection_new_for_address(m_address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION), nullptr,
        m_cancellable.get(), &BoundedBus::connected, new std::shared_ptr<Operation>(m_connecting));
}

void BoundedBus::connected(GObject* /*source*/, GAsyncResult* result, gpointer operation)
{
    taken<Operation>(operation)->connection.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
}

void BoundedBus::answered(GObject* source, GAsyncResult* result, gpointer operation)
{
    taken<Operation>(operation)->reply.reset(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
}

void BoundedBus::takeLateAnswers()
{
    while (g_main_context_iteration(m_context.get(), FALSE))
        continue;
    std::erase_if(m_unanswered, [](const auto& entry) { return entry.second->isDone; });
}

void BoundedBus::waitFor(const Operation& operation, Deadline deadline)
{
    while (!operation.isDone && steady_clock::now() < deadline)
        iterateOnce(deadline);
}

/// Waits until something has been reported, but not after `deadline`.
void BoundedBus::iterateOnce(Deadline deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
    if (left <= milliseconds::zero())
        return;
    bool isExpired = false;
    GSource* const timer = g_timeout_source_new(static_cast<guint>(left.count()));
    g_source_set_callback(timer, expire, &isExpired, nullptr);
    g_source_attach(timer, m_context.get());
    g_main_context_iteration(m_context.get(), TRUE);
    g_source_destroy(timer);
    g_source_unref(timer);
}

bool BoundedBus::isAnyOpen() const
{
    return (m_connecting && !m_connecting->isDone) || !m_unanswered.empty();
}

std::string sessionBusAddress()
{
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address)
        return std::string_view(address).starts_with("autolaunch:") ? std::string() : address;
    const char* const runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
    if (!runtimeFolder || !*runtimeFolder)
        return {};
    const std::string socket = std::string(runtimeFolder) + "/bus";
    std::error_code error;
    return std::filesystem::exists(socket, error) ? "unix:path=" + socket : std::string();
}

} // namespace orvanta
