#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <span>

namespace orvanta {

/// Where the commands of the Hyprland go that the environment names; absent if there is none.
[[nodiscard]] std::optional<QByteArray> hyprlandSocket();

/// Hides the windows with these application ids, for Hyprland, to which minimising means nothing: onto a special workspace.
void hideByHyprland(const QByteArray& socket, std::span<const QString> applicationIds);

/// The commands for that, from Hyprland's answer to "j/clients"; empty if nothing bears one of the ids.
[[nodiscard]] QByteArray hyprlandHidingCommand(const QByteArray& clients, std::span<const QString> applicationIds);

} // namespace orvanta
