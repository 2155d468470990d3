#pragma once

#include "platform/linux/cover_window.h"
#include "platform/linux/x11_cover_inspection.h"

#include <QTimer>

#include <cstddef>

namespace orvanta {

class PanelWindows;
class X11CoverProtocol;

/// The cover on X11: a full-screen window above all others, on every virtual desktop.
///
/// What it guarantees: for two seconds after each presentation it reads back from the X server whether the display is
/// covered and the keyboard is here. What the window manager got wrong is asked for again, then done without the window
/// manager. If the display is still not covered, standard error says so, once a presentation.
class X11CoverWindow : public CoverWindow {
    Q_OBJECT

public:
    /// What is done when the window manager keeps getting it wrong.
    enum class LastResort {
        withoutWindowManager,
        none, ///< a Wayland compositor gives no keyboard to a window that it does not manage
    };

    /// `contents` and `panelWindows` outlive the window.
    X11CoverWindow(
        OverlayContentFactory& contents, std::shared_ptr<const X11CoverProtocol> protocol, PanelWindows& panelWindows, LastResort lastResort);
    ~X11CoverWindow() override;

    void prepare() override;
    void present() override;
    void withdraw() override;

protected:
    void followDisplays() override;

private:
    enum class Manner { managed, overrideRedirect };

    void moveToFront();
    void leaveWindowManager();
    void watch();
    void check();
    [[nodiscard]] QRect nativeFrame() const; ///< where it should stand, in the server's pixels
    [[nodiscard]] std::optional<CoverDefect> defect();
    [[nodiscard]] xcb_window_t id() const { return static_cast<xcb_window_t>(winId()); }

    std::shared_ptr<const X11CoverProtocol> m_protocol;
    PanelWindows& m_panelWindows;
    LastResort m_lastResort;

    Manner m_manner = Manner::managed;

    xcb_window_t m_activeBefore = XCB_NONE; ///< the active window when this one was presented: what it covers
    bool m_isSettled = false;               ///< a check since the presentation found no defect
    bool m_isKeyboardElsewhere = false;     ///< as the check before found
    QTimer m_watch;
    std::size_t m_checks = 0; ///< made since the presentation
    int m_defects = 0;        ///< found in a row
};

} // namespace orvanta
