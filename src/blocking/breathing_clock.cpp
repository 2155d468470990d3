#include "blocking/breathing_clock.h"

#include "blocking/breathing_phase.h"

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace orvanta {

namespace {

using namespace std::chrono_literals;

/// Between two frames of the software renderer, which nothing holds back. A step of the level is then at most 1/100 of
/// its range, less than an eye can tell apart on this screen.
constexpr std::chrono::milliseconds softwareFrame = 40ms;

/// A display that does not say how often it refreshes.
constexpr double assumedRefreshRate = 60;

double wallClock()
{
    return BreathingPhase::secondsSinceReferenceDate(std::chrono::system_clock::now());
}

} // namespace

BreathingClock::BreathingClock(QQuickItem* parent) : QQuickItem(parent), m_timeSource(wallClock)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &BreathingClock::step);
    takeLevel();
}

BreathingClock::~BreathingClock() = default;

void BreathingClock::setTimeSource(TimeSource timeSource)
{
    m_timeSource = std::move(timeSource);
    takeLevel();
}

void BreathingClock::setReduceMotion(bool reduceMotion)
{
    if (std::exchange(m_reduceMotion, reduceMotion) == reduceMotion)
        return;
    takeLevel();
    decide();
    Q_EMIT reduceMotionChanged();
}

double BreathingClock::innerGlowOpacity() const
{
    return BreathingPhase::innerGlowOpacity(m_level);
}

double BreathingClock::middleGlowOpacity() const
{
    return BreathingPhase::middleGlowOpacity(m_level);
}

double BreathingClock::glowScale() const
{
    return BreathingPhase::glowScale(m_level);
}

double BreathingClock::glowLayerOpacity() const
{
    return BreathingPhase::glowLayerOpacity(m_level);
}

void BreathingClock::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemSceneChange)
        watch(data.window);
    else if (change == ItemVisibleHasChanged)
        decide();
    QQuickItem::itemChange(change, data);
}

bool BreathingClock::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Expose:
    case QEvent::Show:
    case QEvent::Hide:
        decide();
        break;
    default:
        break;
    }
    return QQuickItem::eventFilter(watched, event);
}

void BreathingClock::watch(QQuickWindow* window)
{
    stop();
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (m_window)
        m_window->installEventFilter(this);
    decide();
}

bool BreathingClock::canBeSeen() const
{
    return m_window && m_window->isVisible() && m_window->isExposed() && isVisible();
}

void BreathingClock::decide()
{
    const bool shouldRun = !m_reduceMotion && canBeSeen();
    if (shouldRun == m_running)
        return;
    if (shouldRun)
        start();
    else
        stop();
}

void BreathingClock::start()
{
    m_running = true;
    const bool isSoftware = m_window->rendererInterface()->graphicsApi() == QSGRendererInterface::Software;
    m_pace = isSoftware ? Pace::timer : Pace::display;
    m_timer.setSingleShot(m_pace == Pace::display);
    if (m_pace == Pace::timer)
        m_timer.start(softwareFrame);
    else
        m_frames = connect(m_window, &QQuickWindow::frameSwapped, this, &BreathingClock::frameShown, Qt::QueuedConnection);
    step();
    Q_EMIT runningChanged();
}

void BreathingClock::stop()
{
    if (!m_running)
        return;
    m_running = false;
    m_timer.stop();
    disconnect(m_frames);
    Q_EMIT runningChanged();
}

void BreathingClock::step()
{
    m_sinceStep.start();
    takeLevel();
    if (m_pace == Pace::display)
        m_window->update();
}

/// The display's own rhythm is followed as it comes. Where no display holds the frames back they come much faster than
/// they can be seen; those wait for their turn.
void BreathingClock::frameShown()
{
    if (!m_running || m_timer.isActive())
        return;
    const double rate = m_window->screen() ? m_window->screen()->refreshRate() : 0;
    const std::chrono::duration<double, std::milli> period(1000 / (rate > 1 ? rate : assumedRefreshRate));
    const std::chrono::milliseconds elapsed(m_sinceStep.elapsed());
    if (elapsed > period / 2)
        step();
    else
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(period - elapsed));
}

void BreathingClock::takeLevel()
{
    const double level = m_reduceMotion ? BreathingPhase::reducedMotionLevel : BreathingPhase::level(m_timeSource());
    if (std::exchange(m_level, level) != level)
        Q_EMIT levelChanged();
}

} // namespace orvanta
