#include "platform/linux/x11_cover_window.h"

#include "platform/linux/x11_cover_protocol.h"
#include "platform/linux/x11_panel_windows.h"

#include <QDebug>
#include <QGuiApplication>

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

/// One that still does not cover is looked after with the last of these pauses, up to so many checks in all: a busy desktop may take
/// seconds to show a window.
constexpr std::size_t mostChecks = 14;

/// After so many checks in a row that found a defect, the window manager is left out.
constexpr int defectsUntilLeaving = 2;

} // namespace

X11CoverWindow::X11CoverWindow(
    OverlayContentFactory& contents, std::shared_ptr<const X11CoverProtocol> protocol, PanelWindows& panelWindows, LastResort lastResort)
    : CoverWindow(contents)
    , m_protocol(std::move(protocol))
    , m_panelWindows(panelWindows)
    , m_lastResort(lastResort)
{
    setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    m_watch.setSingleShot(true);
    connect(&m_watch, &QTimer::timeout, this, &X11CoverWindow::check);
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
        if (frame().isNull() && screen())
            setFrame(screen()->geometry());
        create();
        m_panelWindows.add(id());
        m_protocol->mark(id());
    }
    prepareContent();
}

void X11CoverWindow::present()
{
    if (!handle())
        prepare();
    m_activeBefore = m_protocol->activeWindow();
    if (!isVisible()) {
        if (m_manner == Manner::managed)
            m_protocol->announce(id());
        showFullScreen();
    }
    moveToFront();
    m_isSettled = false;
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

void X11CoverWindow::moveToFront()
{
    if (m_manner == Manner::managed) {
        m_protocol->askForFront(id());
        return;
    }
    m_protocol->takeFront(id());
}

void X11CoverWindow::leaveWindowManager()
{
    m_manner = Manner::overrideRedirect;
    hide();
    setFlag(Qt::X11BypassWindowManagerHint);
    setGeometry(frame());
    show();
    moveToFront();
}

void X11CoverWindow::watch()
{
    m_checks = 0;
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
    if (m_checks >= pauses.size() && (!found || m_checks == mostChecks)) {
        // One defect after a check without any is the moment of an activation that is being answered.
        if (found && m_defects > 1)
            qWarning(
                "The display %s is not covered: %s", display() ? qUtf8Printable(display()->name()) : "", qUtf8Printable(coverDefectText(*found)));
        return;
    }
    if (found) {
        setGeometry(frame());
        if (m_lastResort == LastResort::withoutWindowManager && m_manner == Manner::managed && m_defects >= defectsUntilLeaving)
            leaveWindowManager();
        else
            moveToFront();
    }
    m_watch.start(pauses[std::min(m_checks, pauses.size() - 1)]);
}

/// Displays came, went or changed. A cover follows its display; when that is gone, so is what it covered, and the window
/// manager moves those windows to another display: the cover goes to the primary one.
void X11CoverWindow::followDisplays()
{
    if (!isVisible())
        return;
    const QScreen* shown = display() ? display() : QGuiApplication::primaryScreen();
    if (!shown || shown->geometry().isEmpty())
        return;
    setFrame(shown->geometry());
    const CoverFacts facts = m_protocol->inspect(id());
    m_activeBefore = facts.active;
    // Where nothing has changed for this one, going to the front could only undo what the user does at this moment.
    if (coverDefect(facts, nativeFrame(), m_panelWindows)) {
        m_isSettled = false;
        // A window that was activated meanwhile is judged by whoever watches activations, see defect().
        if (m_activeBefore == XCB_NONE || m_panelWindows.contains(m_activeBefore))
            moveToFront();
    }
    watch();
}

QRect X11CoverWindow::nativeFrame() const
{
    const qreal ratio = display() ? display()->devicePixelRatio() : devicePixelRatio();
    // Qt scales the size of a display, not where it begins.
    return { frame().topLeft(), frame().size() * ratio };
}

std::optional<CoverDefect> X11CoverWindow::defect()
{
    const CoverFacts facts = m_protocol->inspect(id());
    const auto found = coverDefect(facts, nativeFrame(), m_panelWindows);
    const bool isKeyboardElsewhere = !facts.hasKeyboard && !m_panelWindows.contains(facts.keyboard);
    const bool wasKeyboardElsewhere = std::exchange(m_isKeyboardElsewhere, isKeyboardElsewhere);
    if (!found) {
        m_isSettled = true;
        return std::nullopt;
    }
    // A window is raised and gets the keyboard a moment before it is named the active one: at first sight this may be an activation.
    const bool mayBeActivation = found == CoverDefect::noKeyboard || (found == CoverDefect::beneathAWindow && m_isSettled);
    if (mayBeActivation && isKeyboardElsewhere && !wasKeyboardElsewhere)
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
