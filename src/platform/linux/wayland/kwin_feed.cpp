#include "platform/linux/wayland/kwin_feed.h"

#include "platform/linux/x11_panel_windows.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <atomic>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;
using std::chrono::steady_clock;

namespace {

/// How long a KWin that takes no script is left alone, at first and at last. It may be busy starting.
constexpr std::chrono::seconds firstPause { 2 };
constexpr std::chrono::seconds longestPause { 60 };

/// How long the script is taken for loaded before KWin is asked again: one that somebody unloads says nothing of it.
constexpr std::chrono::seconds untilNextLook { 5 };

constexpr auto interfaceName = "com.orvanta.Focus.Windows";
constexpr auto introspection = R"(<node><interface name="com.orvanta.Focus.Windows">
  <method name="Windows"><arg name="json" type="s" direction="in"/></method>
  <method name="Activated"><arg name="json" type="s" direction="in"/></method>
  <method name="Hidden"/>
</interface></node>)";

/// Our cover. KWin tells of a layer's surface by its program alone, without a title or a desktop file.
bool isOurPanel(const QJsonObject& told)
{
    if (told["role"_L1].toString() == QLatin1StringView(panelWindowRole))
        return true;
    const bool isOurs = told["pid"_L1].toInt() == ::getpid() || told["instance"_L1].toString() == "orvanta-focus"_L1;
    return isOurs && told["isUntitled"_L1].toBool() && told["desktopFile"_L1].toString().isEmpty();
}

/// Several threads of one process may each have a feed.
QByteArray newName()
{
    static std::atomic<int> count = 0;
    return "orvanta_focus_" + QByteArray::number(::getpid()) + '_' + QByteArray::number(++count);
}

QByteArray resource(const QString& name)
{
    QFile file(u":/orvanta/wayland/"_s + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray filledIn(QByteArray script, const QByteArray& service, const QByteArray& path)
{
    return script.replace("@SERVICE@", service).replace("@PATH@", path).replace("@INTERFACE@", interfaceName);
}

BusQuestion scripting(const std::string& kwin, const char* method, const char* replyType)
{
    return { kwin, "/Scripting", "org.kde.kwin.Scripting", method, replyType };
}

} // namespace

QByteArray kwinWindowsScript(const QByteArray& service, const QByteArray& path)
{
    return filledIn(resource(u"kwin_windows.js"_s), service, path);
}

QByteArray kwinHidingScript(const QByteArray& service, const QByteArray& path, const QList<QString>& handles)
{
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(handles)).toJson(QJsonDocument::Compact);
    return filledIn(resource(u"kwin_hide.js"_s), service, path).replace("@HANDLES@", list);
}

KWinFeed::KWinFeed(BoundedBus& bus) : m_kwin(bus, "org.kde.KWin"), m_objectPath("/com/orvanta/Focus/" + newName())
{
    exportObject();
    update();
    // Its first words tell what is there already; what comes after is news.
    if (m_runsScript)
        m_kwin.bus().waitUntil([this] { return m_hasTold; }, BusHelper::soon());
}

KWinFeed::~KWinFeed()
{
    if (!m_attachedTo.empty())
        unload(m_objectPath.split('/').last());
    GDBusConnection* connection = m_kwin.bus().madeConnection();
    if (connection && m_object != 0)
        g_dbus_connection_unregister_object(connection, m_object);
}

void KWinFeed::exportObject()
{
    GDBusConnection* connection = m_kwin.bus().connection(BusHelper::soon());
    if (!connection)
        return;
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    static constexpr GDBusInterfaceVTable table { .method_call = &KWinFeed::called, .get_property = nullptr, .set_property = nullptr, .padding = {} };
    m_kwin.bus().listen([&] {
        m_object = g_dbus_connection_register_object(connection, m_objectPath.constData(), node->interfaces[0], &table, this, nullptr, nullptr);
    });
    g_dbus_node_info_unref(node);
}

void KWinFeed::update()
{
    if (m_kwin.owner() != m_attachedTo || isUnloaded()) {
        detach();
        if (!m_kwin.owner().empty())
            attach();
    } else if (!m_attachedTo.empty() && !m_runsScript && steady_clock::now() >= m_nextTry) {
        attach();
    }
}

std::optional<steady_clock::time_point> KWinFeed::nextTry() const
{
    if (m_attachedTo.empty())
        return std::nullopt;
    if (!m_runsScript)
        return m_nextTry;
    return m_hasTold ? std::optional(m_nextLook) : std::nullopt;
}

bool KWinFeed::isUnloaded()
{
    if (!m_hasTold || steady_clock::now() < m_nextLook)
        return false;
    m_nextLook = steady_clock::now() + untilNextLook;
    const QByteArray plugin = m_objectPath.split('/').last();
    const Variant reply
        = m_kwin.bus().ask(scripting(m_attachedTo, "isScriptLoaded", "(b)"), g_variant_new("(s)", plugin.constData()), BusHelper::soon());
    gboolean isLoaded = TRUE; // a KWin that does not answer has other cares
    if (reply)
        g_variant_get(reply.get(), "(b)", &isLoaded);
    return !isLoaded;
}

void KWinFeed::attach()
{
    GDBusConnection* connection = m_kwin.bus().connection(BusHelper::soon());
    if (!connection || m_object == 0)
        return;
    const bool isFirst = m_attachedTo.empty();
    m_attachedTo = m_kwin.owner();
    m_nextLook = steady_clock::now() + untilNextLook;
    const char* service = g_dbus_connection_get_unique_name(connection);
    const QByteArray plugin = m_objectPath.split('/').last();
    if (!isFirst)
        unload(plugin); // it may have answered too late for us
    m_runsScript = load(kwinWindowsScript(service, m_objectPath), plugin);
    if (m_runsScript)
        return;
    if (isFirst)
        qWarning("KWin takes no script from us; applications cannot be watched.");
    m_pause = isFirst ? firstPause : std::min(2 * m_pause, longestPause);
    m_nextTry = steady_clock::now() + m_pause;
}

void KWinFeed::detach()
{
    m_attachedTo.clear();
    m_runsScript = false;
    m_hasTold = false;
    m_windows.clear();
    m_front.reset();
    m_activations.clear();
}

bool KWinFeed::load(const QByteArray& script, const QByteArray& plugin)
{
    QFile file(m_scripts.filePath(QString::fromUtf8(plugin + ".js")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(script) != script.size())
        return false;
    file.close();
    const QByteArray name = QFile::encodeName(file.fileName());
    const Variant loaded = m_kwin.bus().ask(
        scripting(m_attachedTo, "loadScript", "(i)"), g_variant_new("(ss)", name.constData(), plugin.constData()), BusHelper::soon());
    gint id = -1;
    if (loaded)
        g_variant_get(loaded.get(), "(i)", &id);
    return id >= 0 && m_kwin.bus().ask(scripting(m_attachedTo, "start", "()"), nullptr, BusHelper::soon()) != nullptr;
}

void KWinFeed::unload(const QByteArray& plugin)
{
    static_cast<void>(m_kwin.bus().ask(scripting(m_attachedTo, "unloadScript", "(b)"), g_variant_new("(s)", plugin.constData()), BusHelper::soon()));
}

void KWinFeed::called(GDBusConnection* /*connection*/, const char* sender, const char* /*path*/, const char* /*interface*/, const char* method,
    GVariant* arguments, GDBusMethodInvocation* invocation, gpointer feed)
{
    auto& self = *static_cast<KWinFeed*>(feed);
    // Only the compositor tells us what is in front.
    if (self.m_attachedTo == sender) {
        const char* json = "{}";
        if (g_variant_n_children(arguments) == 1)
            g_variant_get(arguments, "(&s)", &json);
        self.take(method, QJsonDocument::fromJson(json).object());
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void KWinFeed::take(const std::string& method, const QJsonObject& told)
{
    if (method == "Hidden") {
        m_isHidingDone = true;
        return;
    }
    const QJsonObject front = told["front"_L1].toObject();
    const bool isPanel = isOurPanel(front);
    if (method == "Windows") {
        m_windows.clear();
        for (const QJsonValue& window : told["windows"_L1].toArray()) {
            if (!isOurPanel(window.toObject()))
                m_windows.push_back(read(window.toObject()));
        }
        QHash<QString, std::uint64_t> present;
        for (const DesktopWindow& window : m_windows)
            present.insert(window.handle, window.number);
        m_numbers = std::move(present);
        m_hasTold = true;
    }
    if (isPanel)
        return;
    m_front = front.isEmpty() ? std::nullopt : std::optional(front["handle"_L1].toString());
    if (method == "Activated" && !front.isEmpty() && m_hasTold) {
        m_activations.push_back(read(front));
        // It may have been moved since all were told.
        const auto known = std::ranges::find(m_windows, m_activations.back().handle, &DesktopWindow::handle);
        if (known != m_windows.end())
            *known = m_activations.back();
    }
}

DesktopWindow KWinFeed::read(const QJsonObject& told)
{
    DesktopWindow window;
    window.handle = told["handle"_L1].toString();
    std::uint64_t& number = m_numbers[window.handle];
    if (number == 0)
        number = ++m_lastNumber;
    window.number = number;
    // Where KWin knows the desktop file, it is the application's own word; XWayland's windows have none.
    window.traits = { .instanceName = told["instance"_L1].toString().toUtf8(),
        .className = told["className"_L1].toString().toUtf8(),
        .gtkApplicationId = told["desktopFile"_L1].toString().toUtf8(),
        .program = {},
        .process = static_cast<pid_t>(told["pid"_L1].toInt()) };
    window.frame = QRect(told["x"_L1].toInt(), told["y"_L1].toInt(), told["width"_L1].toInt(), told["height"_L1].toInt());
    window.isHidden = told["isHidden"_L1].toBool();
    window.skipsTaskbar = told["skipsTaskbar"_L1].toBool();
    return window;
}

std::optional<DesktopWindow> KWinFeed::front()
{
    const auto found = std::ranges::find_if(m_windows, [this](const DesktopWindow& window) { return m_front == window.handle; });
    return found == m_windows.end() || found->isHidden ? std::nullopt : std::optional(*found);
}

void KWinFeed::hide(std::span<const DesktopWindow> windows)
{
    GDBusConnection* connection = m_kwin.bus().connection(BusHelper::soon());
    if (!connection || m_attachedTo.empty())
        return;
    QList<QString> handles;
    for (const DesktopWindow& window : windows)
        handles << window.handle;
    const QByteArray plugin = newName();
    m_isHidingDone = false;
    if (load(kwinHidingScript(g_dbus_connection_get_unique_name(connection), m_objectPath, handles), plugin))
        m_kwin.bus().waitUntil([this] { return m_isHidingDone; }, BusHelper::soon());
    unload(plugin);
}

} // namespace orvanta
