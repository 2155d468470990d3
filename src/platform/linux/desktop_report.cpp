#include "platform/linux/desktop_report.h"

#include "platform/linux/wayland/bus_helper.h"
#include "platform/linux/wayland/sway_feed.h"

#include <QCoreApplication>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString windowsText(const DesktopFindings& found)
{
    if (!found.session.isWayland)
        return u"the X window manager"_s;
    switch (found.windows) {
    case WindowSource::gnomeExtension:
        return u"the extension of GNOME Shell"_s;
    case WindowSource::kwinScript:
        return u"a script inside KWin"_s;
    case WindowSource::swayCommands:
        return u"sway's commands"_s;
    case WindowSource::foreignToplevel:
        return u"wlr-foreign-toplevel-management"_s;
    case WindowSource::none:
        break;
    }
    return u"nothing"_s;
}

QString coverText(CoverManner cover)
{
    switch (cover) {
    case CoverManner::layerSurface:
        return u"a layer surface"_s;
    case CoverManner::x11Window:
        return u"a window of the X server"_s;
    case CoverManner::none:
        break;
    }
    return u"nothing"_s;
}

QString idleText(const DesktopFindings& found)
{
    if (!found.session.isWayland)
        return u"the X server"_s;
    switch (found.idle) {
    case IdleProtocol::extIdleNotify:
        return u"ext-idle-notify"_s;
    case IdleProtocol::kdeIdle:
        return u"org_kde_kwin_idle"_s;
    case IdleProtocol::mutterIdleMonitor:
        return u"Mutter's idle monitor"_s;
    case IdleProtocol::screenSaver:
        return u"the session's screen saver"_s;
    case IdleProtocol::none:
        break;
    }
    return u"nothing"_s;
}

} // namespace

DesktopFindings findDesktop()
{
    CompositorWindows windows;
    static_cast<void>(windows.feed());
    return findDesktop(windows.source());
}

DesktopFindings findDesktop(WindowSource windows)
{
    DesktopFindings found;
    found.session = findSessionTraits();
    found.cover = coverManner(found.session, qEnvironmentVariable("QT_QPA_PLATFORM"));
    if (!found.session.isWayland)
        return found;
    found.windows = windows;
    found.idle = findIdleProtocol();
    if (const std::string address = sessionBusAddress(); !address.empty()) {
        BoundedBus bus(address);
        found.isGnomeShell = !BusHelper(bus, "org.gnome.Shell").owner().empty();
        found.isKWin = !BusHelper(bus, "org.kde.KWin").owner().empty();
    }
    if (const auto display = WaylandDisplay::open()) {
        found.isKWin = found.isKWin || display->offers("org_kde_plasma_shell"); // on another bus than ours, or on none
        found.isSway = isSway(*display);
    }
    return found;
}

QStringList sourcesInUse(const DesktopFindings& found)
{
    return { u"Windows are shown by: %1"_s.arg(found.session.isWayland ? u"a Wayland compositor"_s : u"an X server"_s),
        u"Applications are seen and hidden by: %1"_s.arg(windowsText(found)), u"The cover is: %1"_s.arg(coverText(found.cover)),
        u"The time without input is known by: %1"_s.arg(idleText(found)) };
}

QStringList whatIsMissing(const DesktopFindings& found)
{
    QStringList missing;
    if (found.session.isWayland && found.windows == WindowSource::none) {
        if (found.isGnomeShell)
            missing << QCoreApplication::translate(
                "DesktopReport", "Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.");
        else if (found.isKWin)
            missing << QCoreApplication::translate("DesktopReport",
                "Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and "
                "in.");
        else
            missing << QCoreApplication::translate("DesktopReport", "Application blocking is not available here; website blocking works.");
    }
    if (found.windows == WindowSource::foreignToplevel && found.isSway)
        missing << QCoreApplication::translate(
            "DesktopReport", "Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.");
    if (found.cover == CoverManner::none) {
        missing << (found.session.isWayland && found.session.hasLayers && !found.session.hasQtForWayland
                ? QCoreApplication::translate(
                      "DesktopReport", "Orvanta Focus cannot cover applications. Install Qt's Wayland platform (qt6-wayland).")
                : QCoreApplication::translate("DesktopReport", "Orvanta Focus cannot cover applications. Start it where XWayland runs."));
    }
    if (found.session.isWayland && found.idle == IdleProtocol::none)
        missing << QCoreApplication::translate(
            "DesktopReport", "This desktop does not tell how long nothing was typed or moved; activity counts as going on.");
    return missing;
}

} // namespace orvanta
