#include "platform/linux/wayland/gnome_feed.h"

#include "platform/linux/x11_panel_windows.h"

#include <functional>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr auto busName = "com.orvanta.Focus.Desktop";
constexpr auto objectPath = "/com/orvanta/Focus/Desktop";

QString text(GVariantDict& told, const char* key)
{
    const char* value = nullptr;
    return g_variant_dict_lookup(&told, key, "&s", &value) ? QString::fromUtf8(value) : QString();
}

int number(GVariantDict& told, const char* key)
{
    gint32 value = 0;
    return g_variant_dict_lookup(&told, key, "i", &value) ? value : 0;
}

bool flag(GVariantDict& told, const char* key)
{
    gboolean value = FALSE;
    return g_variant_dict_lookup(&told, key, "b", &value) && value;
}

/// Nothing for what is none: no window at all, or a panel of ours.
std::optional<DesktopWindow> read(GVariant* dictionary)
{
    GVariantDict told;
    g_variant_dict_init(&told, dictionary);
    DesktopWindow window;
    window.handle = text(told, "id");
    const bool isPanel = text(told, "role") == QLatin1StringView(panelWindowRole);
    // The shell makes an application up for a window that belongs to none.
    if (window.handle.endsWith(".desktop"_L1))
        window.desktopEntry = window.handle;
    window.traits = { .instanceName = text(told, "instance").toUtf8(),
        .className = text(told, "class").toUtf8(),
        .gtkApplicationId = {},
        .program = {},
        .process = static_cast<pid_t>(number(told, "pid")) };
    window.frame = QRect(number(told, "x"), number(told, "y"), number(told, "width"), number(told, "height"));
    window.isHidden = flag(told, "hidden");
    window.skipsTaskbar = flag(told, "skips-taskbar");
    g_variant_dict_clear(&told);
    window.number = std::hash<QString>()(window.handle);
    return window.handle.isEmpty() || isPanel ? std::nullopt : std::optional(std::move(window));
}

} // namespace

GnomeFeed::GnomeFeed(BoundedBus& bus) : m_shell(bus, busName)
{
    if (GDBusConnection* connection = bus.connection(BusHelper::soon()))
        bus.listen([this, connection] {
            m_subscription = g_dbus_connection_signal_subscribe(
                connection, busName, busName, "Activated", objectPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &GnomeFeed::activated, this, nullptr);
        });
}

GnomeFeed::~GnomeFeed()
{
    if (GDBusConnection* connection = m_subscription != 0 ? m_shell.bus().madeConnection() : nullptr)
        g_dbus_connection_signal_unsubscribe(connection, m_subscription);
}

BusQuestion GnomeFeed::question(const char* method, const char* replyType) const
{
    return { m_shell.owner(), objectPath, busName, method, replyType };
}

void GnomeFeed::activated(GDBusConnection* /*connection*/, const char* sender, const char* /*path*/, const char* /*interface*/,
    const char* /*signal*/, GVariant* arguments, gpointer feed)
{
    auto& self = *static_cast<GnomeFeed*>(feed);
    if (self.m_shell.owner() != sender || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(a{sv})")))
        return;
    const Variant dictionary(g_variant_get_child_value(arguments, 0));
    if (auto window = read(dictionary.get()))
        self.m_activations.push_back(*std::move(window));
}

std::vector<DesktopWindow> GnomeFeed::windows()
{
    std::vector<DesktopWindow> result;
    const Variant reply = m_shell.bus().ask(question("Applications", "(aa{sv})"), nullptr, BusHelper::soon());
    if (!reply)
        return result;
    const Variant all(g_variant_get_child_value(reply.get(), 0));
    for (gsize place = 0; place < g_variant_n_children(all.get()); ++place) {
        const Variant dictionary(g_variant_get_child_value(all.get(), place));
        if (auto window = read(dictionary.get()))
            result.push_back(*std::move(window));
    }
    return result;
}

std::optional<DesktopWindow> GnomeFeed::front()
{
    const Variant reply = m_shell.bus().ask(question("Frontmost", "(a{sv})"), nullptr, BusHelper::soon());
    if (!reply)
        return std::nullopt;
    const Variant dictionary(g_variant_get_child_value(reply.get(), 0));
    return read(dictionary.get());
}

void GnomeFeed::hide(std::span<const DesktopWindow> windows)
{
    for (const DesktopWindow& window : windows)
        static_cast<void>(m_shell.bus().ask(question("Hide", "(u)"), g_variant_new("(s)", qUtf8Printable(window.handle)), BusHelper::soon()));
}

} // namespace orvanta
