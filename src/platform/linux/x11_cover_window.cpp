#include "platform/linux/x11_cover_window.h"

#include "platform/linux/x11_cover_protocol.h"
#include "platform/linux/x11_panel_windows.h"

#include <QDebug>
#include <QEvent>
#include <QGuiApplication>
#include <QQuickItem>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// How long after the presentation, or after the check before, the X server is asked whether the display is covered.
/// Window managers settle within the first two.
constexpr std::array pauses { 60ms, 90ms, 250ms, 600ms, 1000ms };

/// After so many checks in a row that found a defect, the window manager is left out.
constexpr int defectsUntilLeaving = 2;

} // namespace

X11CoverWindow::X11CoverWindow(OverlayContentFactory& contents, const X11CoverProtocol& protocol, PanelWindows& panelWindows)
    : m_contents(contents)
    , m_protocol(protocol)
    , m_panelWindows(panelWindows)
{
    setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setTitle(QGuiApplication::applicationDisplayName());
    setColor(Qt::black); // until the screen is painted
    m_watch.setSingleShot(true);
    connect(&m_watch, &QTimer::timeout, this, &X11CoverWindow::check);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &X11CoverWindow::followDisplays, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &X11CoverWindow::followDisplays, Qt::QueuedConnection);
}

X11CoverWindow::~X11CoverWindow()
{
    if (!handle())
        return;
    const xcb_window_t gone = id();
    destroy();
    m_panelWindows.remove(gone);
}

void X11CoverWindow::prepare()
{
    if (!handle()) {
        if (m_frame.isNull() && screen())
            setFrame(screen()->geometry());
        create();
        m_panelWindows.add(id());
        m_protocol.mark(id());
    }
    if (!m_nextContent)
        m_nextContent = makeContent();
}

void X11CoverWindow::setFrame(const QRect& frame)
{
    m_frame = frame;
    const auto screens = QGuiApplication::screens();
    const auto display = std::ranges::find(screens, frame, &QScreen::geometry);
    if (display != screens.end() && *display != m_display) {
        if (m_display)
            disconnect(m_display, nullptr, this, nullptr);
        m_display = *display;
        connect(m_display, &QScreen::geometryChanged, this, &X11CoverWindow::followDisplays, Qt::QueuedConnection);
        setScreen(m_display);
    }
    setGeometry(frame);
}

void X11CoverWindow::setContent(std::optional<Callback<>> acknowledge)
{
    dropContent();
    m_content = m_nextContent ? std::move(m_nextContent) : makeContent();
    m_content->setAcknowledge(std::move(acknowledge));
    m_content->item().setSize(size());
    m_content->item().setParentItem(contentItem());
    m_content->item().forceActiveFocus();
}

void X11CoverWindow::present()
{
    if (!handle())
        prepare();
    m_activeBefore = m_protocol.activeWindow();
    if (!isVisible()) {
        if (m_manner == Manner::managed)
            m_protocol.announce(id());
        showFullScreen();
    }
    moveToFront();
    watch();
}

void X11CoverWindow::withdraw()
{
    m_watch.stop();
    if (!isVisible())
        return;
    hide();
    dropContent();
    QMetaObject::invokeMethod(this, &X11CoverWindow::prepare, Qt::QueuedConnection);
}

/// The button of the screen that goes may be what brought us here: the screen must outlive its button's press.
void X11CoverWindow::dropContent()
{
    if (!m_content)
        return;
    m_content->item().setVisible(false);
    QMetaObject::invokeMethod(this, [dropped = std::shared_ptr(std::move(m_content))] { }, Qt::QueuedConnection);
}

bool X11CoverWindow::event(QEvent* event)
{
    // A window manager's key, a task switcher's cross. One that is not shown must not keep the program from ending.
    if (event->type() == QEvent::Close && isVisible()) {
        event->ignore();
        return true;
    }
    return QQuickWindow::event(event);
}

void X11CoverWindow::resizeEvent(QResizeEvent* event)
{
    QQuickWindow::resizeEvent(event);
    fit();
}

/// size() is what was last asked for or last heard of, whichever came later. When a display changes its size twice in a
/// row, the window may end at the size that it was last told of: then no event says that a screen which came in between
/// is too small.
void X11CoverWindow::fit()
{
    for (OverlayContent* content : { m_content.get(), m_nextContent.get() })
        if (content)
            content->item().setSize(size());
}

std::unique_ptr<OverlayContent> X11CoverWindow::makeContent()
{
    auto content = m_contents.make();
    content->item().setSize(size());
    // A hidden window may have it at once, which settles all that depends on the window; in a window that is shown, it
    // would take the keyboard from the screen that is there.
    if (!isVisible())
        content->item().setParentItem(contentItem());
    return content;
}

void X11CoverWindow::moveToFront()
{
    if (m_manner == Manner::managed) {
        m_protocol.askForFront(id());
        return;
    }
    m_protocol.takeFront(id());
}

void X11CoverWindow::leaveWindowManager()
{
    m_manner = Manner::overrideRedirect;
    hide();
    setFlag(Qt::X11BypassWindowManagerHint);
    setGeometry(m_frame);
    show();
    moveToFront();
}

void X11CoverWindow::watch()
{
    m_checks = 0;
    m_isSettled = false;
    m_isKeyboardElsewhere = false;
    m_defects = 0;
    m_watch.start(pauses.front());
}

void X11CoverWindow::check()
{
    prepare(); // the next screen, should this one be presented again
    fit();
    const auto found = defect();
    m_defects = found ? m_defects + 1 : 0;
    ++m_checks;
    if (m_checks == pauses.size()) {
        // One defect after a check without any is the moment of an activation that is being answered.
        if (found && m_defects > 1)
            qWarning(
                "The display %s is not covered: %s", m_display ? qUtf8Printable(m_display->name()) : "", qUtf8Printable(coverDefectText(*found)));
        return;
    }
    if (found) {
        setGeometry(m_frame);
        if (m_manner == Manner::managed && m_defects >= defectsUntilLeaving)
            leaveWindowManager();
        else
            moveToFront();
    }
    m_watch.start(pauses[m_checks]);
}

/// Displays came, went or changed. A cover follows its display; when that is gone, so is what it covered, and the window
/// manager moves those windows to another display: the cover goes to the primary one.
void X11CoverWindow::followDisplays()
{
    if (!isVisible())
        return;
    const QScreen* display = m_display ? m_display.data() : QGuiApplication::primaryScreen();
    if (!display || display->geometry().isEmpty())
        return;
    setFrame(display->geometry());
    m_activeBefore = m_protocol.activeWindow();
    // A window that was activated meanwhile is judged by whoever watches activations, see defect().
    if (m_activeBefore == XCB_NONE || m_panelWindows.contains(m_activeBefore))
        moveToFront();
    watch();
}

std::optional<CoverDefect> X11CoverWindow::defect()
{
    const qreal ratio = m_display ? m_display->devicePixelRatio() : devicePixelRatio();
    // Qt scales the size of a display, not where it begins.
    const QRect native(m_frame.topLeft(), m_frame.size() * ratio);
    const CoverFacts facts = m_protocol.inspect(id());
    const auto found = coverDefect(facts, native, m_panelWindows);
    const bool wasKeyboardElsewhere = std::exchange(m_isKeyboardElsewhere, found == CoverDefect::noKeyboard);
    if (!found) {
        m_isSettled = true;
        return std::nullopt;
    }
    // A window gets the keyboard a moment before it is named the active one: at first sight this may be an activation.
    if (found == CoverDefect::noKeyboard && !wasKeyboardElsewhere)
        return std::nullopt;
    // Whoever watches activations decides whether a window that was activated since takes this one away or needs it
    // anew. Going to the front before that would undo what the user did.
    const bool isActivatedSince = facts.active != XCB_NONE && !m_panelWindows.contains(facts.active);
    const bool isDecidedElsewhere = isActivatedSince && (m_isSettled || facts.active != m_activeBefore);
    if (isDecidedElsewhere && (found == CoverDefect::beneathAWindow || found == CoverDefect::noKeyboard))
        return std::nullopt;
    return found;
}

} // namespace orvanta
