#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace orvanta {

/// Gives back what GLib counts references to.
struct GLibUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    template <typename Object>
    void operator()(Object* object) const
    {
        g_object_unref(object);
    }
};
template <typename T>
using GLibPtr = std::unique_ptr<T, GLibUnref>;
using Variant = GLibPtr<GVariant>;

/// One question to an object on a bus. Nothing is started to answer it.
struct BusQuestion {
    std::string destination;
    std::string path;
    const char* interface;
    const char* method;
    const char* replyType;
};

/// A connection to one D-Bus, asked from one thread, in which nobody who has gone silent is waited for twice: the question
/// stays open, and until it is answered (or its addressee is gone) every further one to the same addressee fails at once.
/// The same holds for a bus that takes connections and says nothing. Runs no event loop of anyone else.
class BoundedBus {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    explicit BoundedBus(std::string address);
    ~BoundedBus();
    BoundedBus(const BoundedBus&) = delete;
    BoundedBus& operator=(const BoundedBus&) = delete;

    /// The answer; absent if it is an error, has another type, or is not there at `deadline`. Takes over a floating `arguments`.
    [[nodiscard]] Variant ask(const BusQuestion& question, GVariant* arguments, Deadline deadline);

    /// Whether the connection could not be made or has ended; it stays so.
    [[nodiscard]] bool isLost() const;

    /// The connection, which is made when first needed; null if it is not there at `deadline`.
    [[nodiscard]] GDBusConnection* connection(Deadline deadline);

    /// The same, also after it has ended; null if it was never made.
    [[nodiscard]] GDBusConnection* madeConnection() const { return m_connecting ? m_connecting->connection.get() : nullptr; }

    /// Calls `begin`, whose subscriptions and registrations on the connection then report from dispatch(), waitUntil() and ask().
    template <typename Begin>
    void listen(Begin begin)
    {
        g_main_context_push_thread_default(m_context.get());
        begin();
        g_main_context_pop_thread_default(m_context.get());
    }

    /// Has what has arrived reported, without waiting.
    void dispatch() { takeLateAnswers(); }

    /// Reports what arrives until `isSo`, but not after `deadline`; whether it is so.
    bool waitUntil(const std::function<bool()>& isSo, Deadline deadline);

    /// Readable when dispatch() has something to do, from the first call on. The event loop that watches it belongs to this thread.
    [[nodiscard]] int descriptor();

private:
    struct Operation {
        bool isDone = false;
        Variant reply = nullptr;
        GLibPtr<GDBusConnection> connection = nullptr;
    };

    static void connected(GObject* source, GAsyncResult* result, gpointer operation);
    static void answered(GObject* source, GAsyncResult* result, gpointer operation);

    void connect();
    void takeLateAnswers();
    void waitFor(const Operation& operation, Deadline deadline);
    [[nodiscard]] bool isAnyOpen() const;
    void iterateOnce(Deadline deadline);

    GLibPtr<GMainContext> m_context;
    bool m_isWatched = false;
    GLibPtr<GCancellable> m_cancellable;
    std::string m_address;
    std::shared_ptr<Operation> m_connecting;
    std::unordered_map<std::string, std::shared_ptr<Operation>> m_unanswered; ///< by destination
};

/// The address of the session's bus; empty if the session has none. Nothing is started.
[[nodiscard]] std::string sessionBusAddress();

} // namespace orvanta
