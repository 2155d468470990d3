#include "platform/linux/cover_window.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickItem>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanta {

using namespace std::chrono_literals;

namespace {

/// After the window was hidden: what the user has turned to comes first.
constexpr auto untilPaintedAhead = 150ms;

} // namespace

CoverWindow::CoverWindow(OverlayContentFactory& contents) : m_contents(contents)
{
    setTitle(QGuiApplication::applicationDisplayName());
    setColor(Qt::black); // until the screen is painted
    m_paintAhead.setSingleShot(true);
    m_paintAhead.setInterval(untilPaintedAhead);
    connect(&m_paintAhead, &QTimer::timeout, this, &CoverWindow::paintAhead);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &CoverWindow::followDisplays, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &CoverWindow::followDisplays, Qt::QueuedConnection);
}

void CoverWindow::setFrame(const QRect& frame)
{
    m_frame = frame;
    const auto screens = QGuiApplication::screens();
    const auto display = std::ranges::find(screens, frame, &QScreen::geometry);
    if (display != screens.end() && *display != m_display) {
        if (m_display)
            disconnect(m_display, nullptr, this, nullptr);
        m_display = *display;
        connect(m_display, &QScreen::geometryChanged, this, &CoverWindow::followDisplays, Qt::QueuedConnection);
        setScreen(m_display);
    }
    setGeometry(frame);
}

void CoverWindow::moveTo(const QRect& frame)
{
    setFrame(frame);
    followDisplays();
}

void CoverWindow::setContent(std::optional<Callback<>> acknowledge)
{
    m_paintAhead.stop();
    dropContent();
    m_content = m_nextContent ? std::move(m_nextContent) : makeContent();
    m_content->setAcknowledge(std::move(acknowledge));
    m_content->item().setSize(size());
    m_content->item().setParentItem(contentItem());
    m_content->item().forceActiveFocus();
}

/// The button of the screen that goes may be what brought us here: the screen must outlive its button's press.
void CoverWindow::dropContent()
{
    if (!m_content)
        return;
    m_content->item().setVisible(false);
    QMetaObject::invokeMethod(this, [dropped = std::shared_ptr(std::move(m_content))] { }, Qt::QueuedConnection);
}

bool CoverWindow::event(QEvent* event)
{
    // A window manager's key, a task switcher's cross. One that is not shown must not keep the program from ending.
    if (event->type() == QEvent::Close && isVisible()) {
        event->ignore();
        return true;
    }
    return QQuickWindow::event(event);
}

void CoverWindow::resizeEvent(QResizeEvent* event)
{
    QQuickWindow::resizeEvent(event);
    fit();
}

/// size() is what was last asked for or last heard of, whichever came later. When a display changes its size twice in a
/// row, the window may end at the size that it was last told of: then no event says that a screen which came in between
/// is too small.
void CoverWindow::fit()
{
    for (OverlayContent* content : { m_content.get(), m_nextContent.get() })
        if (content)
            content->item().setSize(size());
}

std::unique_ptr<OverlayContent> CoverWindow::makeContent()
{
    auto content = m_contents.make();
    content->item().setSize(size());
    return content;
}

void CoverWindow::prepareContent()
{
    if (!m_nextContent)
        m_nextContent = makeContent();
    // A window without a screen may have it at once, which settles all that depends on the window; where there is one, also
    // in a window that is hidden only on its way to another display, it would take the keyboard from it.
    if (isVisible() || m_content)
        return;
    m_nextContent->item().setParentItem(contentItem());
    m_paintAhead.start();
}

/// A first picture costs the most: its memory, the pictures and letters that it is made of, all of the display. Painted while nobody waits,
/// it needs little more than to be shown. Graphics hardware paints into nothing but a window that is shown, and is quick.
void CoverWindow::paintAhead()
{
    if (isVisible() || !handle() || !m_nextContent || rendererInterface()->graphicsApi() != QSGRendererInterface::Software)
        return;
    static_cast<void>(grabWindow());
}

} // namespace orvanta
