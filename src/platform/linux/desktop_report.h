#pragma once

#include "platform/linux/wayland/compositor_windows.h"
#include "platform/linux/wayland/wayland_idle_source.h"
#include "platform/linux/wayland/wayland_session.h"

#include <QStringList>

namespace orvanta {

/// What was found of this desktop.
struct DesktopFindings {
    SessionTraits session;
    CoverManner cover = CoverManner::none;
    WindowSource windows = WindowSource::none; ///< of a Wayland desktop
    IdleProtocol idle = IdleProtocol::none;    ///< of a Wayland desktop
    bool isGnomeShell = false;
    bool isKWin = false;
    bool isSway = false;

    bool operator==(const DesktopFindings&) const = default;
};

/// Asks the desktop. Takes as long as its helpers take to answer, a few seconds at most.
[[nodiscard]] DesktopFindings findDesktop();

/// The same where it is known already what the windows are told by.
[[nodiscard]] DesktopFindings findDesktop(WindowSource windows);

/// What the program works with here, one line for each thing, for those who want to know.
[[nodiscard]] QStringList sourcesInUse(const DesktopFindings& found);

/// What it lacks, and what the user can do about that; empty if nothing.
[[nodiscard]] QStringList whatIsMissing(const DesktopFindings& found);

} // namespace orvanta
