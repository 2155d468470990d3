#include "platform/linux/wayland/hiding_commands.h"

#include "platform/linux/wayland/wayland_display.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <array>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr timeval patience { .tv_sec = 1, .tv_usec = 0 };
constexpr std::uint32_t longestAnswer = 16 * 1024 * 1024;

/// A local socket that answers commands, and is not waited for without a bound.
class CommandSocket {
public:
    explicit CommandSocket(const QByteArray& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        if (m_socket < 0 || static_cast<std::size_t>(path.size()) >= sizeof(address.sun_path))
            return;
        std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
        ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
        m_isConnected = ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~CommandSocket()
    {
        if (m_socket >= 0)
            ::close(m_socket);
    }
    CommandSocket(const CommandSocket&) = delete;
    CommandSocket& operator=(const CommandSocket&) = delete;

    bool send(const QByteArray& bytes)
    {
        return m_isConnected && ::send(m_socket, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) == bytes.size();
    }
    /// That many bytes; fewer if no more come.
    QByteArray read(std::uint32_t count)
    {
        QByteArray result;
        std::array<char, 65536> piece {};
        while (static_cast<std::uint32_t>(result.size()) < count) {
            const auto wanted = std::min<std::size_t>(piece.size(), count - static_cast<std::size_t>(result.size()));
            const ssize_t got = ::recv(m_socket, piece.data(), wanted, 0);
            if (got <= 0)
                break;
            result.append(piece.data(), got);
        }
        return result;
    }

private:
    int m_socket;
    bool m_isConnected = false;
};

/// sway speaks i3's protocol: "i3-ipc", length, type, payload, both numbers in the machine's own order.
enum class SwayMessage : std::uint32_t { runCommand = 0, getTree = 4 };

QByteArray askSway(CommandSocket& sway, SwayMessage type, const QByteArray& payload)
{
    constexpr std::string_view magic = "i3-ipc";
    const std::array<std::uint32_t, 2> numbers { static_cast<std::uint32_t>(payload.size()), static_cast<std::uint32_t>(type) };
    QByteArray message(magic.data(), magic.size());
    message.append(reinterpret_cast<const char*>(numbers.data()), sizeof(numbers)).append(payload);
    constexpr std::uint32_t headSize = magic.size() + sizeof(numbers);
    if (!sway.send(message))
        return {};
    const QByteArray head = sway.read(headSize);
    if (static_cast<std::uint32_t>(head.size()) < headSize)
        return {};
    std::uint32_t length = 0;
    std::memcpy(&length, head.constData() + magic.size(), sizeof(length));
    return length > longestAnswer ? QByteArray() : sway.read(length);
}

QByteArray askHyprland(const QByteArray& socket, const QByteArray& command)
{
    CommandSocket hyprland(socket); // one command a connection
    return hyprland.send(command) ? hyprland.read(longestAnswer) : QByteArray();
}

bool isSocket(const QByteArray& path)
{
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISSOCK(status.st_mode);
}

bool isAmong(const QString& id, std::span<const QString> ids)
{
    return !id.isEmpty() && std::ranges::find(ids, id) != ids.end();
}

void collect(const QJsonObject& node, std::span<const QString> ids, QByteArray& command)
{
    const QString applicationId = node["app_id"_L1].toString(node["window_properties"_L1].toObject()["class"_L1].toString());
    if (isAmong(applicationId, ids) && node["pid"_L1].isDouble())
        command += "[con_id=" + QByteArray::number(node["id"_L1].toInteger()) + "] move scratchpad;";
    for (const auto children : { "nodes"_L1, "floating_nodes"_L1 })
        for (const QJsonValue& child : node[children].toArray())
            collect(child.toObject(), ids, command);
}

} // namespace

pid_t compositorProcess(const WaylandDisplay& display)
{
    ucred peer {};
    socklen_t size = sizeof(peer);
    return ::getsockopt(display.descriptor(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

std::optional<QByteArray> swaySocket(pid_t compositor)
{
    const QByteArray usual
        = qgetenv("XDG_RUNTIME_DIR") + "/sway-ipc." + QByteArray::number(::getuid()) + '.' + QByteArray::number(compositor) + ".sock";
    for (const QByteArray& path : { usual, qgetenv("SWAYSOCK") }) {
        if (!path.isEmpty() && isSocket(path))
            return path;
    }
    return std::nullopt;
}

std::optional<QByteArray> hyprlandSocket()
{
    const QByteArray signature = qgetenv("HYPRLAND_INSTANCE_SIGNATURE");
    for (const QByteArray& folder : { qgetenv("XDG_RUNTIME_DIR") + "/hypr/", QByteArray("/tmp/hypr/") }) {
        const QByteArray path = folder + signature + "/.socket.sock";
        if (!signature.isEmpty() && isSocket(path))
            return path;
    }
    return std::nullopt;
}

QByteArray swayHidingCommand(const QByteArray& tree, std::span<const QString> applicationIds)
{
    QByteArray command;
    collect(QJsonDocument::fromJson(tree).object(), applicationIds, command);
    return command;
}

QByteArray hyprlandHidingCommand(const QByteArray& clients, std::span<const QString> applicationIds)
{
    QByteArray command;
    for (const QJsonValue& client : QJsonDocument::fromJson(clients).array()) {
        const QJsonObject window = client.toObject();
        if (isAmong(window["class"_L1].toString(), applicationIds))
            command += "dispatch movetoworkspacesilent special:orvanta,address:" + window["address"_L1].toString().toUtf8() + ';';
    }
    return command.isEmpty() ? command : "[[BATCH]]" + command;
}

bool hideByCommands(pid_t compositor, std::span<const QString> applicationIds)
{
    if (const auto socket = swaySocket(compositor)) {
        CommandSocket sway(*socket);
        const QByteArray command = swayHidingCommand(askSway(sway, SwayMessage::getTree, {}), applicationIds);
        if (!command.isEmpty())
            askSway(sway, SwayMessage::runCommand, command);
        return true;
    }
    if (const auto socket = hyprlandSocket()) {
        const QByteArray command = hyprlandHidingCommand(askHyprland(*socket, "j/clients"), applicationIds);
        if (!command.isEmpty())
            askHyprland(*socket, command);
        return true;
    }
    return false;
}

} // namespace orvanta
