#include "platform/linux/secret_service.h"

#include <QFileInfo>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

#include <libsecret/secret.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// read() is over within two seconds; this leaves the rest of them to the calls that find themselves cancelled.
constexpr auto patience = std::chrono::milliseconds(1800);

template <typename T>
using Shared = std::unique_ptr<T, decltype([](T* object) { g_object_unref(object); })>;
using Attributes = std::unique_ptr<GHashTable, decltype([](GHashTable* table) { g_hash_table_unref(table); })>;
using Value = std::unique_ptr<SecretValue, decltype([](SecretValue* value) { secret_value_unref(value); })>;
using Items = std::unique_ptr<GList, decltype([](GList* list) { g_list_free_full(list, g_object_unref); })>;

/// A bound on everything that is given its cancellable. It needs a thread of its own because the calls block this one,
/// and run no event loop that a timer could fire in.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : m_cancellable(g_cancellable_new())
        , m_thread([cancellable = m_cancellable.get(), limit](const std::stop_token& finished) {
            std::mutex mutex;
            std::condition_variable_any sleep;
            std::unique_lock lock(mutex);
            sleep.wait_for(lock, finished, limit, [] { return false; });
            if (!finished.stop_requested())
                g_cancellable_cancel(cancellable);
        })
    {
    }

    [[nodiscard]] GCancellable* cancellable() const { return m_cancellable.get(); }

private:
    Shared<GCancellable> m_cancellable;
    std::jthread m_thread;
};

/// Whether the session has a bus at all. Without one, the library would start one of its own.
bool hasSessionBus()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return !address.startsWith("autolaunch:"_L1);
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !runtimeFolder.isEmpty() && QFileInfo::exists(runtimeFolder + u"/bus"_s);
}

} // namespace

std::optional<QByteArray> SecretService::read(const QString& service, const QString& account)
{
    if (!hasSessionBus())
        return std::nullopt;
    const Deadline deadline(patience);

    // The library ends the process when the shared bus connection is lost, unless it is told not to.
    const Shared<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline.cancellable(), nullptr));
    if (!bus || g_dbus_connection_is_closed(bus.get()))
        return std::nullopt;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);

    // A client of our own: the library's shared one would outlive a keyring that is started anew.
    const Shared<::SecretService> keyring(
        secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_NONE, deadline.cancellable(), nullptr));
    if (!keyring)
        return std::nullopt;

    const Attributes attributes(g_hash_table_new_full(g_str_hash, g_str_equal, nullptr, g_free));
    for (const auto& [name, text] : { std::pair("service", &service), std::pair("account", &account) })
        g_hash_table_insert(attributes.get(), const_cast<char*>(name), g_strdup(text->toUtf8().constData()));
    // Without the flag to unlock nobody is prompted; without the flag for all of them one item is returned at most.
    const Items items(
        secret_service_search_sync(keyring.get(), nullptr, attributes.get(), SECRET_SEARCH_LOAD_SECRETS, deadline.cancellable(), nullptr));
    if (!items)
        return std::nullopt;
    const Value secret(secret_item_get_secret(SECRET_ITEM(items->data)));
    if (!secret)
        return std::nullopt;
    gsize size = 0;
    const char* bytes = secret_value_get(secret.get(), &size);
    return QByteArray(bytes, static_cast<qsizetype>(size));
}

} // namespace orvanta
