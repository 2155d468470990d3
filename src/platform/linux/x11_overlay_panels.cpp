#include "platform/linux/x11_overlay_panels.h"

#include "platform/linux/x11_cover_protocol.h"
#include "platform/linux/x11_panel_windows.h"

namespace orvanta {

X11OverlayPanels::X11OverlayPanels(
    OverlayContentFactory& contents, xcb_connection_t* connection, PanelWindows& panelWindows, X11CoverWindow::LastResort lastResort)
    : CoverPanels(
          [&contents, &panelWindows, lastResort, protocol = std::make_shared<X11CoverProtocol>(connection)]() -> std::unique_ptr<CoverWindow> {
              return std::make_unique<X11CoverWindow>(contents, protocol, panelWindows, lastResort);
          })
{
}

} // namespace orvanta
