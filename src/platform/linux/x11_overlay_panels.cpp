#include "platform/linux/x11_overlay_panels.h"

#include "platform/linux/x11_cover_protocol.h"
#include "platform/linux/x11_cover_window.h"
#include "platform/linux/x11_panel_windows.h"

#include <QGuiApplication>
#include <QTimer>

#include <chrono>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// After the program's start: late enough not to delay its own window, early enough for any user.
constexpr auto untilSpareWindow = 150ms;

class X11OverlayPanel : public OverlayPanel {
public:
    explicit X11OverlayPanel(std::unique_ptr<X11CoverWindow> window) : m_window(std::move(window)) { }

    void setFrame(const QRect& frame) override { m_window->setFrame(frame); }
    void setContent(std::optional<Callback<>> acknowledge) override { m_window->setContent(std::move(acknowledge)); }
    void orderFront() override { m_window->present(); }
    void orderOut() override { m_window->withdraw(); }

private:
    std::unique_ptr<X11CoverWindow> m_window;
};

} // namespace

X11OverlayPanels::X11OverlayPanels(OverlayContentFactory& contents, xcb_connection_t* connection, PanelWindows& panelWindows)
    : m_contents(contents)
    , m_protocol(std::make_unique<X11CoverProtocol>(connection))
    , m_panelWindows(panelWindows)
{
    QTimer::singleShot(untilSpareWindow, this, [this] {
        if (m_made == 0)
            makeSpareWindow();
    });
}

X11OverlayPanels::~X11OverlayPanels() = default;

std::unique_ptr<OverlayPanel> X11OverlayPanels::make()
{
    makeSpareWindow();
    ++m_made;
    auto panel = std::make_unique<X11OverlayPanel>(std::move(m_spareWindow));
    QTimer::singleShot(untilSpareWindow, this, [this] {
        // One spare as long as a display is left that never had a panel.
        if (m_made < QGuiApplication::screens().size())
            makeSpareWindow();
    });
    return panel;
}

void X11OverlayPanels::makeSpareWindow()
{
    if (m_spareWindow)
        return;
    m_spareWindow = std::make_unique<X11CoverWindow>(m_contents, *m_protocol, m_panelWindows);
    m_spareWindow->prepare();
}

} // namespace orvanta
