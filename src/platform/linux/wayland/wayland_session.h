#pragma once

#include <QString>

namespace orvanta {

/// How a cover can stand above everything in this session.
enum class CoverManner { none, layerSurface, x11Window };

/// What has to be known of the session before there is an application object.
struct SessionTraits {
    bool isWayland = false;       ///< a compositor answers
    bool hasLayers = false;       ///< it has zwlr_layer_shell_v1
    bool hasQtForWayland = false; ///< Qt's Wayland platform is installed
    bool hasSeat = false;         ///< the compositor has one, with or without devices
    bool hasXServer = false;      ///< an X server answers, XWayland too
    QString xServerProblem;       ///< otherwise why not

    bool operator==(const SessionTraits&) const = default;
};

/// Asks the compositor and the X server.
[[nodiscard]] SessionTraits findSessionTraits();

/// What the cover will be; `platform` is Qt's platform if the user has chosen one, and otherwise empty.
[[nodiscard]] CoverManner coverManner(const SessionTraits& session, const QString& platform);

/// Has Qt make its windows through Wayland, and surfaces without a role for those windows that bypass the window manager. Without a
/// seat it must not ask for input methods over Wayland, which ends it (Qt 6.4).
void useWaylandWindows(const SessionTraits& session);

} // namespace orvanta
