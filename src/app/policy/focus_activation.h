#pragma once

#include <QString>

namespace orvanta {

/// The one rule that decides whether focus is active, from its two sources.
namespace FocusActivation {

/// True when the service reports work in progress or the system's Focus is on.
[[nodiscard]] constexpr bool isActive(bool orvantaWorkActive, bool systemFocusActive)
{
    return orvantaWorkActive || systemFocusActive;
}

} // namespace FocusActivation

/// Whether a change of focus counts: only a transition between two different values is passed on.
namespace FocusStateTransition {

[[nodiscard]] constexpr bool counts(bool oldValue, bool newValue)
{
    return oldValue != newValue;
}

} // namespace FocusStateTransition

/// The line that tells the user which source holds focus on.
[[nodiscard]] QString focusStatusLabelText(bool orvantaWorkActive, bool systemFocusActive);

} // namespace orvanta
