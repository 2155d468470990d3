#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <span>
#include <sys/types.h>
#include <vector>

namespace orvanta {

class WaylandDisplay;

/// The process at the other end of the connection; 0 if that cannot be told.
[[nodiscard]] pid_t compositorProcess(const WaylandDisplay& display);

/// Hides the windows with these application ids by the compositor's own commands, where minimising means nothing to it: sway,
/// into the scratchpad; Hyprland, onto a special workspace. False if it is neither. Waits for the answer, for a moment at most.
bool hideByCommands(pid_t compositor, std::span<const QString> applicationIds);

/// Where the commands of a sway with that process id go, and of the Hyprland that the environment names; absent if there is none.
[[nodiscard]] std::optional<QByteArray> swaySocket(pid_t compositor);
[[nodiscard]] std::optional<QByteArray> hyprlandSocket();

/// The command that moves what bears one of the ids into the scratchpad, from sway's answer to "get_tree"; empty if nothing does.
[[nodiscard]] QByteArray swayHidingCommand(const QByteArray& tree, std::span<const QString> applicationIds);

/// The same for Hyprland, from its answer to "j/clients".
[[nodiscard]] QByteArray hyprlandHidingCommand(const QByteArray& clients, std::span<const QString> applicationIds);

} // namespace orvanta
