#pragma once

#include "platform/overlay_panels.h"

#include <QObject>

#include <memory>

#include <xcb/xcb.h>

namespace orvanta {

class PanelWindows;
class X11CoverProtocol;
class X11CoverWindow;

/// The covers on X11. Keeps one window with a fresh blocking screen ready, hidden, so that a display is covered within a
/// frame of being asked for, the first time as well.
class X11OverlayPanels : public QObject, public OverlayPanels {
    Q_OBJECT

public:
    /// `connection` is Qt's own. All outlive the panels, whose windows are registered with `panelWindows`, so that the
    /// activation monitor does not take them for applications.
    X11OverlayPanels(OverlayContentFactory& contents, xcb_connection_t* connection, PanelWindows& panelWindows);
    ~X11OverlayPanels() override;

    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override;

private:
    void makeSpareWindow();

    OverlayContentFactory& m_contents;
    std::unique_ptr<X11CoverProtocol> m_protocol;
    PanelWindows& m_panelWindows;
    std::unique_ptr<X11CoverWindow> m_spareWindow; ///< hidden, with content, on the primary display
    qsizetype m_made = 0;
};

} // namespace orvanta
