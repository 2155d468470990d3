#include "platform/linux/accessible_documents.h"

#include <algorithm>
#include <string_view>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

// As the protocol numbers them.
constexpr guint32 activeState = 1;
constexpr guint32 embedsRelation = 13;

constexpr auto accessible = "org.a11y.atspi.Accessible";

QString text(const char* bytes)
{
    return QString::fromUtf8(bytes);
}

} // namespace

std::optional<AccessibleDocument> AccessibleDocuments::active(const QString& applicationName)
{
    m_deadline = std::chrono::steady_clock::now() + m_patience;
    if (!findBus())
        return std::nullopt;
    listen();
    const std::vector<Place> applications = children({ "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root" });
    std::erase_if(
        m_names, [&applications](const auto& known) { return std::ranges::find(applications, known.first, &Place::owner) == applications.end(); });
    for (const Place& application : applications) {
        if (!this->applicationName(application).contains(applicationName))
            continue;
        for (const Place& window : children(application)) {
            if (!isActive(window))
                continue;
            const auto place = embedded(window);
            return place ? document(*place) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// Whether there is a connection to the accessibility bus, whose address the session's bus knows.
bool AccessibleDocuments::findBus()
{
    if (m_bus && !m_bus->isLost())
        return true;
    m_bus.reset();
    m_names.clear();
    if (m_session && m_session->isLost())
        m_session.reset();
    if (!m_session) {
        const std::string address = sessionBusAddress();
        if (address.empty())
            return false;
        m_session = std::make_unique<BoundedBus>(address);
    }
    const Variant reply = m_session->ask({ "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", "(s)" }, nullptr, m_deadline);
    if (!reply)
        return false;
    const char* address = nullptr;
    g_variant_get(reply.get(), "(&s)", &address);
    m_bus = std::make_unique<BoundedBus>(address);
    m_isListening = false;
    return true;
}

/// Chromium follows which of its windows is active only while somebody wants to hear of it.
void AccessibleDocuments::listen()
{
    if (!m_isListening)
        m_isListening = ask({ "org.a11y.atspi.Registry", "/org/a11y/atspi/registry" }, "org.a11y.atspi.Registry", "RegisterEvent", "()",
                            g_variant_new("(sass)", "object:state-changed:active", nullptr, ""))
            != nullptr;
}

Variant AccessibleDocuments::ask(const Place& place, const char* interface, const char* method, const char* replyType, GVariant* arguments)
{
    return m_bus->ask({ place.owner, place.path, interface, method, replyType }, arguments, m_deadline);
}

std::vector<AccessibleDocuments::Place> AccessibleDocuments::children(const Place& place)
{
    std::vector<Place> places;
    const Variant reply = ask(place, accessible, "GetChildren", "(a(so))");
    if (!reply)
        return places;
    GVariantIter* all = nullptr;
    g_variant_get(reply.get(), "(a(so))", &all);
    const char* owner = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(all, "(&s&o)", &owner, &path))
        places.push_back({ owner, path });
    g_variant_iter_free(all);
    return places;
}

QString AccessibleDocuments::name(const Place& place)
{
    const Variant reply = ask(place, "org.freedesktop.DBus.Properties", "Get", "(v)", g_variant_new("(ss)", accessible, "Name"));
    if (!reply)
        return {};
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    const Variant held(value);
    return g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) ? text(g_variant_get_string(value, nullptr)) : QString();
}

/// The bus itself knows, and answers whatever the application does.
bool AccessibleDocuments::isOwnProcess(const std::string& owner)
{
    const Variant reply = m_bus->ask({ "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID", "(u)" },
        g_variant_new("(s)", owner.c_str()), m_deadline);
    guint32 process = 0;
    if (reply)
        g_variant_get(reply.get(), "(u)", &process);
    return process == static_cast<guint32>(::getpid());
}

QString AccessibleDocuments::applicationName(const Place& application)
{
    const auto known = m_names.find(application.owner);
    if (known != m_names.end())
        return known->second;
    // Ours could not answer while it asks.
    QString found = isOwnProcess(application.owner) ? u"-"_s : name(application).toLower();
    if (!found.isEmpty()) // one that is still starting has not said it yet
        m_names.emplace(application.owner, found);
    return found;
}

bool AccessibleDocuments::isActive(const Place& window)
{
    const Variant reply = ask(window, accessible, "GetState", "(au)");
    if (!reply)
        return false;
    const Variant states(g_variant_get_child_value(reply.get(), 0));
    gsize count = 0;
    const auto* words = static_cast<const guint32*>(g_variant_get_fixed_array(states.get(), &count, sizeof(guint32)));
    return count > 0 && (words[0] & (1U << activeState)) != 0;
}

/// The document that the window is there for, as the window itself names it.
std::optional<AccessibleDocuments::Place> AccessibleDocuments::embedded(const Place& window)
{
    const Variant reply = ask(window, accessible, "GetRelationSet", "(a(ua(so)))");
    if (!reply)
        return std::nullopt;
    std::optional<Place> found;
    GVariantIter* relations = nullptr;
    g_variant_get(reply.get(), "(a(ua(so)))", &relations);
    guint32 kind = 0;
    GVariantIter* targets = nullptr;
    while (g_variant_iter_next(relations, "(ua(so))", &kind, &targets)) {
        const char* owner = nullptr;
        const char* path = nullptr;
        if (kind == embedsRelation && !found && g_variant_iter_next(targets, "(&s&o)", &owner, &path))
            found = Place { owner, path };
        g_variant_iter_free(targets);
    }
    g_variant_iter_free(relations);
    return found;
}

std::optional<AccessibleDocument> AccessibleDocuments::document(const Place& place)
{
    const Variant reply = ask(place, "org.a11y.atspi.Document", "GetAttributes", "(a{ss})");
    if (!reply)
        return std::nullopt;
    QString url;
    GVariantIter* attributes = nullptr;
    g_variant_get(reply.get(), "(a{ss})", &attributes);
    const char* key = nullptr;
    const char* value = nullptr;
    while (g_variant_iter_next(attributes, "{&s&s}", &key, &value)) {
        // Gecko says the one, Chromium the other.
        if (url.isEmpty() && (std::string_view(key) == "DocURL" || std::string_view(key) == "URI"))
            url = text(value);
    }
    g_variant_iter_free(attributes);
    if (url.isEmpty())
        return std::nullopt;
    return AccessibleDocument { .url = url, .title = name(place) };
}

} // namespace orvanta
