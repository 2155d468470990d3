#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <cstdint>
#include <optional>

namespace orvanta {

/// Whether the program may know the system's Focus.
enum class FocusAuthorisation : std::uint8_t {
    notDetermined, ///< nobody has been asked yet
    restricted,
    denied, ///< by the user, or because the system has no Focus to tell of
    authorised,
};

/// The operating system's Focus: the mode in which the user does not want to be disturbed. Main thread only. The answers
/// come on the main thread, from the event loop, each exactly once; none comes after the object is gone.
class SystemFocus {
public:
    virtual ~SystemFocus() = default;

    /// Asks the user, where the system does that, whether the program may show alerts. Answers whether it may.
    virtual void requestNotificationPermission(Callback<const Result<bool>&> answered) = 0;

    /// Asks the user, where the system does that, whether the program may know the Focus.
    virtual void requestAuthorisation(Callback<FocusAuthorisation> answered) = 0;

    /// As it stands now. Costs next to nothing, and never waits.
    [[nodiscard]] virtual FocusAuthorisation authorisation() const = 0;

    /// Whether Focus is on now; absent where the system does not say. Costs next to nothing, and never waits: an
    /// implementation that has to ask somebody else keeps the last answer. Only of meaning while authorised.
    [[nodiscard]] virtual std::optional<bool> isFocused() const = 0;
};

} // namespace orvanta
