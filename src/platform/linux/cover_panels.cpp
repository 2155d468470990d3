#include "platform/linux/cover_panels.h"

#include "platform/linux/cover_window.h"

#include <QGuiApplication>
#include <QTimer>

#include <chrono>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// From when events are handled: late enough not to delay the program's own window, early enough for any user.
constexpr auto untilSpareWindow = 150ms;

class CoverPanel final : public OverlayPanel {
public:
    explicit CoverPanel(std::unique_ptr<CoverWindow> window) : m_window(std::move(window)) { }

    void setFrame(const QRect& frame) override { m_window->setFrame(frame); }
    void setContent(std::optional<Callback<>> acknowledge) override { m_window->setContent(std::move(acknowledge)); }
    void orderFront() override { m_window->present(); }
    void orderOut() override { m_window->withdraw(); }

private:
    std::unique_ptr<CoverWindow> m_window;
};

} // namespace

CoverPanels::CoverPanels(MakeWindow makeWindow) : m_makeWindow(std::move(makeWindow))
{
    // Counted from the first event: a start that takes longer would find the time passed, and the window waiting for it.
    QTimer::singleShot(0, this, [this] {
        QTimer::singleShot(untilSpareWindow, this, [this] {
            if (m_made == 0)
                makeSpareWindow();
        });
    });
}

CoverPanels::~CoverPanels() = default;

std::unique_ptr<OverlayPanel> CoverPanels::make()
{
    makeSpareWindow();
    ++m_made;
    auto panel = std::make_unique<CoverPanel>(std::move(m_spareWindow));
    QTimer::singleShot(untilSpareWindow, this, [this] {
        // One spare as long as a display is left that never had a panel.
        if (m_made < QGuiApplication::screens().size())
            makeSpareWindow();
    });
    return panel;
}

void CoverPanels::makeSpareWindow()
{
    if (m_spareWindow)
        return;
    m_spareWindow = m_makeWindow();
    m_spareWindow->prepare();
}

} // namespace orvanta
