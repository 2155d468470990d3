#include "platform/linux/wayland/sway_feed.h"

#include "platform/linux/wayland/wayland_display.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// sway speaks i3's protocol: "i3-ipc", length, type, payload, both numbers in the machine's own order.
enum class SwayMessage : std::uint32_t { runCommand = 0, subscribe = 2, getTree = 4 };

constexpr std::string_view magic = "i3-ipc";
constexpr std::uint32_t headSize = magic.size() + 2 * sizeof(std::uint32_t);
constexpr std::uint32_t longestAnswer = 16 * 1024 * 1024;

QJsonDocument readMessage(CommandSocket& sway)
{
    const QByteArray head = sway.read(headSize);
    if (static_cast<std::uint32_t>(head.size()) < headSize)
        return {};
    std::uint32_t length = 0;
    std::memcpy(&length, head.constData() + magic.size(), sizeof(length));
    return length > longestAnswer ? QJsonDocument() : QJsonDocument::fromJson(sway.read(length));
}

QJsonDocument ask(CommandSocket& sway, SwayMessage type, const QByteArray& payload)
{
    const std::array<std::uint32_t, 2> numbers { static_cast<std::uint32_t>(payload.size()), static_cast<std::uint32_t>(type) };
    QByteArray message(magic.data(), magic.size());
    message.append(reinterpret_cast<const char*>(numbers.data()), sizeof(numbers)).append(payload);
    return sway.send(message) ? readMessage(sway) : QJsonDocument();
}

QJsonObject tree(const QByteArray& socket)
{
    CommandSocket sway(socket);
    return ask(sway, SwayMessage::getTree, {}).object();
}

bool isWindow(const QJsonObject& node)
{
    return node["pid"_L1].isDouble() && node["nodes"_L1].toArray().isEmpty();
}

DesktopWindow read(const QJsonObject& node)
{
    DesktopWindow window;
    window.handle = QString::number(node["id"_L1].toInteger());
    window.number = static_cast<std::uint64_t>(node["id"_L1].toInteger());
    const QJsonObject properties = node["window_properties"_L1].toObject(); // of XWayland's windows
    const QByteArray applicationId = node["app_id"_L1].toString().toUtf8();
    window.traits = { .instanceName = properties.isEmpty() ? applicationId : properties["instance"_L1].toString().toUtf8(),
        .className = properties.isEmpty() ? applicationId : properties["class"_L1].toString().toUtf8(),
        .gtkApplicationId = applicationId,
        .program = {},
        .process = static_cast<pid_t>(node["pid"_L1].toInt()) };
    const QJsonObject rect = node["rect"_L1].toObject();
    window.frame = QRect(rect["x"_L1].toInt(), rect["y"_L1].toInt(), rect["width"_L1].toInt(), rect["height"_L1].toInt());
    window.isActive = node["focused"_L1].toBool();
    window.isHidden = !node["visible"_L1].toBool();
    return window;
}

QJsonArray children(const QJsonObject& node)
{
    QJsonArray all = node["nodes"_L1].toArray();
    for (const QJsonValue& floating : node["floating_nodes"_L1].toArray())
        all.append(floating);
    return all;
}

void collect(const QJsonObject& node, std::vector<DesktopWindow>& found)
{
    if (isWindow(node))
        found.push_back(read(node));
    for (const QJsonValue& child : children(node))
        collect(child.toObject(), found);
}

/// Who is at the other end.
std::optional<ucred> compositor(const WaylandDisplay& display)
{
    ucred process {};
    socklen_t size = sizeof(process);
    if (::getsockopt(display.descriptor(), SOL_SOCKET, SO_PEERCRED, &process, &size) != 0)
        return std::nullopt;
    return process;
}

} // namespace

std::optional<QByteArray> swaySocket(const WaylandDisplay& display)
{
    const auto sway = compositor(display);
    if (!sway)
        return std::nullopt;
    const QByteArray name = "sway-ipc." + QByteArray::number(sway->uid) + '.' + QByteArray::number(sway->pid) + ".sock";
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR") + '/' + name;
    const QByteArray named = qgetenv("SWAYSOCK");
    // One that was left in the environment by another session is none of this compositor's.
    for (const QByteArray& path : { usual, named.endsWith(name) ? named : QByteArray() }) {
        if (!path.isEmpty() && isSocket(path))
            return path;
    }
    return std::nullopt;
}

bool isSway(const WaylandDisplay& display)
{
    const auto process = compositor(display);
    QFile name(u"/proc/%1/comm"_s.arg(process ? process->pid : 0));
    return name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "sway";
}

std::vector<DesktopWindow> swayWindows(const QJsonObject& tree)
{
    std::vector<DesktopWindow> found;
    collect(tree, found);
    std::ranges::sort(found, {}, &DesktopWindow::number);
    return found;
}

std::optional<DesktopWindow> swayFront(const QJsonObject& tree)
{
    // Every node names its children in the order in which they had the focus.
    QJsonObject node = tree;
    while (!isWindow(node)) {
        const QJsonArray order = node["focus"_L1].toArray();
        const QJsonArray all = children(node);
        const auto next = std::ranges::find_if(all, [&order](const QJsonValue& child) { return child["id"_L1] == order.first(); });
        if (order.isEmpty() || next == all.end())
            return std::nullopt;
        node = (*next).toObject();
    }
    return read(node);
}

SwayFeed::SwayFeed(QByteArray socket) : m_socket(std::move(socket)), m_events(m_socket)
{
    ask(m_events, SwayMessage::subscribe, R"(["window"])");
}

void SwayFeed::update()
{
    while (m_events.isReadable()) {
        const QJsonObject event = readMessage(m_events).object();
        const QJsonObject window = event["container"_L1].toObject();
        // Without the focus: what would have it but for a cover.
        if (event["change"_L1] == "focus"_L1 && window["focused"_L1].toBool())
            m_activations.push_back(read(window));
    }
}

std::vector<DesktopWindow> SwayFeed::windows()
{
    return swayWindows(tree(m_socket));
}

std::optional<DesktopWindow> SwayFeed::front()
{
    return swayFront(tree(m_socket));
}

void SwayFeed::hide(std::span<const DesktopWindow> windows)
{
    QByteArray command;
    for (const DesktopWindow& window : windows)
        command += "[con_id=" + window.handle.toUtf8() + "] move scratchpad;";
    CommandSocket sway(m_socket);
    ask(sway, SwayMessage::runCommand, command);
}

} // namespace orvanta
