#include "platform/linux/wayland/hyprland_commands.h"

#include "platform/linux/wayland/command_socket.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint32_t longestAnswer = 4 * 1024 * 1024;

QByteArray askHyprland(const QByteArray& socket, const QByteArray& command)
{
    CommandSocket hyprland(socket); // one command a connection
    return hyprland.send(command) ? hyprland.read(longestAnswer) : QByteArray();
}

} // namespace

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

QByteArray hyprlandHidingCommand(const QByteArray& clients, std::span<const QString> applicationIds)
{
    QByteArray command;
    for (const QJsonValue& client : QJsonDocument::fromJson(clients).array()) {
        const QJsonObject window = client.toObject();
        if (std::ranges::find(applicationIds, window["class"_L1].toString()) != applicationIds.end())
            command += "dispatch movetoworkspacesilent special:orvanta,address:" + window["address"_L1].toString().toUtf8() + ';';
    }
    return command.isEmpty() ? command : "[[BATCH]]" + command;
}

void hideByHyprland(const QByteArray& socket, std::span<const QString> applicationIds)
{
    const QByteArray command = hyprlandHidingCommand(askHyprland(socket, "j/clients"), applicationIds);
    if (!command.isEmpty())
        askHyprland(socket, command);
}

} // namespace orvanta
