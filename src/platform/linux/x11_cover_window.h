#pragma once

#include "platform/linux/x11_cover_inspection.h"
#include "platform/overlay_panels.h"

#include <QPointer>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

#include <cstddef>
#include <memory>

namespace orvanta {

class PanelWindows;
class X11CoverProtocol;

/// One cover: a full-screen window above all others, on every virtual desktop. Holds the screen that it shows and the
/// next one, made ahead of need.
///
/// What it guarantees: for two seconds after each presentation it reads back from the X server whether the display is
/// covered and the keyboard is here. What the window manager got wrong is asked for again, then done without the window
/// manager. If the display is still not covered, standard error says so, once a presentation.
class X11CoverWindow : public QQuickWindow {
    Q_OBJECT

public:
    /// All three outlive the window.
    X11CoverWindow(OverlayContentFactory& contents, const X11CoverProtocol& protocol, PanelWindows& panelWindows);
    ~X11CoverWindow() override;

    /// Makes what is needed to be quick, while there is time: the native window and the next screen.
    void prepare();

    /// The display to cover, by its frame in logical pixels. Applies at once, also while shown.
    void setFrame(const QRect& frame);

    /// Shows the screen that was made ahead, or a new one, in place of the one before.
    void setContent(std::optional<Callback<>> acknowledge);

    void present();
    void withdraw();

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class Manner { managed, overrideRedirect };

    [[nodiscard]] std::unique_ptr<OverlayContent> makeContent();
    void dropContent();
    void fit();
    void moveToFront();
    void leaveWindowManager();
    void watch();
    void check();
    void followDisplays();
    [[nodiscard]] std::optional<CoverDefect> defect();
    [[nodiscard]] xcb_window_t id() const { return static_cast<xcb_window_t>(winId()); }

    OverlayContentFactory& m_contents;
    const X11CoverProtocol& m_protocol;
    PanelWindows& m_panelWindows;

    QRect m_frame;
    QPointer<QScreen> m_display;
    std::unique_ptr<OverlayContent> m_content;
    std::unique_ptr<OverlayContent> m_nextContent;
    Manner m_manner = Manner::managed;

    xcb_window_t m_activeBefore = XCB_NONE; ///< the active window when this one was presented: what it covers
    bool m_isSettled = false;               ///< a check since the presentation found no defect
    bool m_isKeyboardElsewhere = false;     ///< as the check before found
    QTimer m_watch;
    std::size_t m_checks = 0; ///< made since the presentation
    int m_defects = 0;        ///< found in a row
};

} // namespace orvanta
