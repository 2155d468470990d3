#include "app/system_focus_monitor.h"

#include <QPointer>

namespace orvanta {

SystemFocusMonitor::SystemFocusMonitor(SystemFocus& center, std::chrono::milliseconds pause) : m_center(center)
{
    m_sleep.setSingleShot(true);
    m_sleep.setTimerType(Qt::PreciseTimer);
    m_sleep.setInterval(pause);
    connect(&m_sleep, &QTimer::timeout, this, &SystemFocusMonitor::look);
}

void SystemFocusMonitor::start()
{
    if (m_isStarted)
        return;
    m_isStarted = true;
    // What is answered does not matter here: the Focus can be known to a program that may not show alerts.
    m_center.requestNotificationPermission([self = QPointer(this)](const Result<bool>&) {
        if (self)
            self->authorise();
    });
}

void SystemFocusMonitor::authorise()
{
    if (m_center.authorisation() != FocusAuthorisation::notDetermined) {
        look();
        return;
    }
    // Nor does it here: every look asks again how things stand.
    m_center.requestAuthorisation([self = QPointer(this)](FocusAuthorisation) {
        if (self)
            self->look();
    });
}

void SystemFocusMonitor::look()
{
    const bool isFocused = value();
    if (m_lastReportedValue != isFocused) {
        m_lastReportedValue = isFocused;
        const QPointer alive(this);
        if (onStatusChange)
            onStatusChange(isFocused);
        if (!alive)
            return;
    }
    m_sleep.start();
}

bool SystemFocusMonitor::value() const
{
    return m_center.authorisation() == FocusAuthorisation::authorised && m_center.isFocused().value_or(false);
}

} // namespace orvanta
