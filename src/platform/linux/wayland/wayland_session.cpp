#include "platform/linux/wayland/wayland_session.h"

#include "platform/linux/wayland/wayland_display.h"
#include "platform/linux/x11_connection.h"

#include <QDir>
#include <QLibraryInfo>

namespace orvanta {

using namespace Qt::StringLiterals;

SessionTraits findSessionTraits()
{
    SessionTraits traits;
    if (const auto display = WaylandDisplay::open()) {
        traits.isWayland = true;
        traits.hasSeat = display->offers("wl_seat");
        traits.hasLayers = display->offers("zwlr_layer_shell_v1");
        const QDir platforms(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms"_L1);
        traits.hasQtForWayland = !platforms.entryList({ u"libqwayland*"_s }, QDir::Files).isEmpty();
    }
    const auto connection = X11Connection::open();
    traits.hasXServer = connection.has_value();
    if (!connection)
        traits.xServerProblem = connection.error().description;
    return traits;
}

CoverManner coverManner(const SessionTraits& session, const QString& platform)
{
    const bool mayUseWayland = platform.isEmpty() || platform.startsWith("wayland"_L1);
    const bool mayUseX11 = platform.isEmpty() || platform.startsWith("xcb"_L1);
    if (mayUseWayland && session.isWayland && session.hasLayers && session.hasQtForWayland)
        return CoverManner::layerSurface;
    return mayUseX11 && session.hasXServer ? CoverManner::x11Window : CoverManner::none;
}

void useWaylandWindows(const SessionTraits& session)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "wayland");
    qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
    if (!session.hasSeat)
        qputenv("QT_IM_MODULE", "compose");
}

} // namespace orvanta
