#include "platform/linux/cover_panels.h"

#include "platform/linux/cover_window.h"

#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <chrono>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// From when events are handled: late enough not to delay the program's own window, early enough for any user.
constexpr auto untilSpareWindow = 150ms;

/// How long after a change of the displays, or after the look before, it is looked where the window in front is: what tells of displays
/// and what moves windows are not the same program everywhere.
constexpr std::array untilWindowsMoved { 250ms, 750ms, 2000ms };

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
    std::erase(m_windows, nullptr);
    m_windows.emplace_back(m_spareWindow.get());
    auto panel = std::make_unique<CoverPanel>(std::move(m_spareWindow));
    QTimer::singleShot(untilSpareWindow, this, [this] {
        // One spare as long as a display is left that never had a panel.
        if (m_made < QGuiApplication::screens().size())
            makeSpareWindow();
    });
    return panel;
}

void CoverPanels::goWithWindowInFront(FrameInFront frameInFront)
{
    m_frameInFront = std::move(frameInFront);
    m_settling.setSingleShot(true);
    connect(&m_settling, &QTimer::timeout, this, &CoverPanels::followWindowInFront);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &CoverPanels::watchDisplays);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &CoverPanels::watchDisplays);
}

void CoverPanels::watchDisplays()
{
    m_looks = 0;
    m_settling.start(untilWindowsMoved.front());
}

void CoverPanels::followWindowInFront()
{
    if (++m_looks < untilWindowsMoved.size())
        m_settling.start(untilWindowsMoved[m_looks]);
    std::vector<CoverWindow*> shown;
    for (const auto& window : m_windows) {
        if (window && window->isVisible())
            shown.push_back(window);
    }
    const std::optional<QRect> wanted = shown.empty() ? std::nullopt : m_frameInFront();
    if (wanted && std::ranges::none_of(shown, [&wanted](const CoverWindow* window) { return window->frame() == *wanted; }))
        shown.back()->moveTo(*wanted);
}

void CoverPanels::makeSpareWindow()
{
    if (m_spareWindow)
        return;
    m_spareWindow = m_makeWindow();
    m_spareWindow->prepare();
}

} // namespace orvanta
