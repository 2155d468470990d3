#include "blocking/application_blocker.h"

#include "blocking/overlay_presenting.h"
#include "platform/activation_monitor.h"
#include "platform/screens.h"

#include <QPointer>

namespace orvanta {

ApplicationBlocker::ApplicationBlocker(
    BlockedBundleIdentifiers blockedBundleIdentifiers, OverlayPresenting& overlay, ActivationMonitor& activationMonitor, Screens& screens)
    : m_blockedBundleIdentifiers(std::move(blockedBundleIdentifiers))
    , m_overlay(overlay)
    , m_activationMonitor(activationMonitor)
    , m_screens(screens)
{
}

ApplicationBlocker::~ApplicationBlocker() = default;

void ApplicationBlocker::startObserving()
{
    if (m_observer)
        return;
    m_observer = m_activationMonitor.observe([self = QPointer(this)](std::optional<QString> bundleIdentifier) {
        if (self)
            self->decideLater(std::move(bundleIdentifier));
    });
}

/// The decision is a task of its own, after the notification: the display is asked for when the decision is made.
void ApplicationBlocker::decideLater(std::optional<QString> bundleIdentifier)
{
    QMetaObject::invokeMethod(
        this,
        [this, identifier = std::move(bundleIdentifier)] {
            const std::optional<Screen> screen = m_screens.main();
            handleActivation(identifier, screen ? screen->number : 0);
        },
        Qt::QueuedConnection);
}

void ApplicationBlocker::handleActivation(const std::optional<QString>& bundleIdentifier, std::uint32_t screenNumber)
{
    if (!bundleIdentifier)
        return;
    if (focusActive && m_blockedBundleIdentifiers().contains(*bundleIdentifier)) {
        m_activeBlockedBundleIdentifier = bundleIdentifier;
        m_overlay.present(BlockedTarget::application(*bundleIdentifier), screenNumber);
        return;
    }
    if (m_activeBlockedBundleIdentifier == bundleIdentifier)
        return;
    m_activeBlockedBundleIdentifier.reset();
    m_overlay.dismiss();
}

} // namespace orvanta
