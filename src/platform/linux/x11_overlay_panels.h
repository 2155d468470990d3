#pragma once

#include "platform/linux/cover_panels.h"
#include "platform/linux/x11_cover_window.h"

#include <xcb/xcb.h>

namespace orvanta {

class PanelWindows;

/// The covers on X11, also where the X server is XWayland.
class X11OverlayPanels final : public CoverPanels {
    Q_OBJECT

public:
    /// `connection` is Qt's own. All outlive the panels, whose windows are registered with `panelWindows`, so that the
    /// activation monitor does not take them for applications.
    X11OverlayPanels(OverlayContentFactory& contents, xcb_connection_t* connection, PanelWindows& panelWindows,
        X11CoverWindow::LastResort lastResort = X11CoverWindow::LastResort::withoutWindowManager);
};

} // namespace orvanta
