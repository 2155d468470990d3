#include "platform/linux/desktop_system_focus.h"

#include "platform/linux/desktop_focus_sources.h"

#include <utility>

namespace orvanta {

DesktopSystemFocus::DesktopSystemFocus() : m_sources(makeFocusSources()) { }

DesktopSystemFocus::~DesktopSystemFocus() = default;

void DesktopSystemFocus::requestNotificationPermission(Callback<const Result<bool>&> answered)
{
    // Every program of the session may show notifications.
    QMetaObject::invokeMethod(this, [answer = std::move(answered)]() mutable { answer(true); }, Qt::QueuedConnection);
}

void DesktopSystemFocus::requestAuthorisation(Callback<FocusAuthorisation> answered)
{
    QMetaObject::invokeMethod(this, [this, answer = std::move(answered)]() mutable { answer(authorisation()); }, Qt::QueuedConnection);
}

FocusAuthorisation DesktopSystemFocus::authorisation() const
{
    return isFocused() ? FocusAuthorisation::authorised : FocusAuthorisation::denied;
}

std::optional<bool> DesktopSystemFocus::isFocused() const
{
    std::optional<bool> isFocused;
    for (const auto& source : m_sources) {
        if (const auto value = source->isFocused())
            isFocused = *value || isFocused.value_or(false);
    }
    return isFocused;
}

} // namespace orvanta
