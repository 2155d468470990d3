#include "platform/linux/wayland/wayland_activation_monitor.h"

#include "platform/linux/wayland/wayland_running_applications.h"

#include <span>

namespace orvanta {

WaylandActivationMonitor::WaylandActivationMonitor(CompositorWindows& windows, OwnApplication own) : m_windows(windows), m_identity(std::move(own))
{
    m_windows.watch([this] { take(); });
    // The desktop entries are read before the first activation has to be answered within a frame.
    QMetaObject::invokeMethod(&m_context, [this] { m_identity.refresh(); }, Qt::QueuedConnection);
}

WaylandActivationMonitor::~WaylandActivationMonitor()
{
    m_windows.watch([] { });
}

Subscription WaylandActivationMonitor::observe(Callback<std::optional<QString>> activated)
{
    take(); // what happened before now is for those who were here before
    return m_activations.observe(std::move(activated));
}

void WaylandActivationMonitor::take()
{
    WindowFeed* feed = m_windows.feed();
    if (!feed)
        return;
    if (m_windows.attachment() != m_attachment)
        attach(*feed);
    for (const DesktopWindow& window : feed->takeActivations())
        note(identifierOf(window));
}

/// The source is new or was away: only what is in front now, and was not before, has come to the front.
void WaylandActivationMonitor::attach(WindowFeed& feed)
{
    const bool isFirst = m_attachment == 0;
    m_attachment = m_windows.attachment();
    static_cast<void>(feed.takeActivations());
    const auto front = feed.front();
    const auto identifier = front ? identifierOf(*front) : std::nullopt;
    if (!isFirst && identifier && identifier != m_inFront)
        note(identifier);
    else if (identifier)
        m_inFront = identifier;
}

void WaylandActivationMonitor::note(const std::optional<QString>& identifier)
{
    if (identifier)
        m_inFront = identifier;
    m_activations.add(identifier);
}

std::optional<QString> WaylandActivationMonitor::identifierOf(const DesktopWindow& window)
{
    m_identity.refresh();
    return applicationsOf(m_identity, std::span(&window, 1)).front().identifier;
}

} // namespace orvanta
