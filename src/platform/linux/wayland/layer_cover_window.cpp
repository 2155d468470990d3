#include "platform/linux/wayland/layer_cover_window.h"

#include <QGuiApplication>

#include <array>
#include <chrono>
#include <cstddef>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// How long after the presentation, or after the check before, it is looked whether the cover is shown and has the keyboard.
constexpr std::array pauses { 250ms, 500ms, 1000ms, 2000ms, 3000ms, 3250ms };

/// The check that takes a new surface where asking has not helped: one side may take the keyboard for given that the other has not
/// seen. Once only, for the cover is gone for a moment, and a launcher above it may have the keyboard by right.
constexpr std::size_t renewingCheck = 3;

} // namespace

LayerCoverWindow::LayerCoverWindow(OverlayContentFactory& contents, std::shared_ptr<const LayerShell> shell)
    : CoverWindow(contents)
    , m_shell(std::move(shell))
{
    // Qt then makes a surface without a role (see useWayland()).
    setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    m_watch.setSingleShot(true);
    connect(&m_watch, &QTimer::timeout, this, &LayerCoverWindow::check);
    // labwc gives the keyboard to a window that is activated beneath, of which it says nothing where that was active already.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* window) {
        if (m_isWanted && !m_watch.isActive() && !qobject_cast<const CoverWindow*>(window))
            watch();
    });
}

LayerCoverWindow::~LayerCoverWindow()
{
    m_isWanted = false;
    m_role.reset(); // before the surface
}

void LayerCoverWindow::prepare()
{
    if (!handle()) {
        if (frame().isNull() && screen())
            setFrame(screen()->geometry());
        create();
    }
    prepareContent();
}

void LayerCoverWindow::present()
{
    m_isWanted = true;
    if (m_role && m_covered != display())
        loseRole(); // which stays on the display that it was taken for
    if (m_role)
        m_role->takeKeyboard();
    else
        takeRole();
    watch();
}

void LayerCoverWindow::withdraw()
{
    m_isWanted = false;
    m_watch.stop();
    if (!m_role && !isVisible())
        return;
    loseRole();
    dropContent();
    QMetaObject::invokeMethod(this, &LayerCoverWindow::prepare, Qt::QueuedConnection);
}

void LayerCoverWindow::takeRole()
{
    if (!handle())
        prepare();
    m_covered = display();
    m_role = m_shell->cover(
        *this, display(), [this] { show(); },
        // Not at once: the role itself is calling.
        [this] { QMetaObject::invokeMethod(this, &LayerCoverWindow::followDisplays, Qt::QueuedConnection); });
}

void LayerCoverWindow::loseRole()
{
    m_role.reset();
    destroy(); // hides as well; a surface that had a role can have no other
}

/// A cover follows its display; when that is gone, so is what it covered, and the compositor moves those windows to another display:
/// the cover goes to the primary one.
void LayerCoverWindow::followDisplays()
{
    if (!m_isWanted)
        return;
    const QScreen* shown = display() ? display() : QGuiApplication::primaryScreen();
    loseRole();
    if (!shown || shown->geometry().isEmpty())
        return;
    setFrame(shown->geometry());
    takeRole();
    watch();
}

void LayerCoverWindow::watch()
{
    m_checks = 0;
    m_watch.start(pauses.front());
}

void LayerCoverWindow::check()
{
    prepareContent(); // the next screen, should this one be presented again
    const bool isKeyboardHere = qobject_cast<CoverWindow*>(QGuiApplication::focusWindow()) != nullptr;
    if (!display() || (isExposed() && isKeyboardHere))
        return;
    if (++m_checks < pauses.size()) {
        if (isExposed() && m_checks == renewingCheck) {
            loseRole();
            takeRole();
        } else if (isExposed() && m_role) {
            m_role->takeKeyboard();
        }
        m_watch.start(pauses[m_checks]);
        return;
    }
    qWarning("The display %s is not covered: %s", qUtf8Printable(display()->name()),
        isExposed() ? "the cover does not get the keyboard" : "the compositor does not show the cover");
}

LayerOverlayPanels::LayerOverlayPanels(OverlayContentFactory& contents, std::unique_ptr<LayerShell> shell)
    : CoverPanels([&contents, shared = std::shared_ptr<const LayerShell>(std::move(shell))]() -> std::unique_ptr<CoverWindow> {
        return std::make_unique<LayerCoverWindow>(contents, shared);
    })
{
}

} // namespace orvanta
