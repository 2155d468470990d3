#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QLatin1StringView>
#include <QObject>
#include <QVariantList>

namespace orvanta {

/// Where orvanta-filterd is found on the system bus.
namespace Filterd {

inline constexpr QLatin1StringView service { "com.orvanta.focus.OrvantaFocusDNSProxy" };
inline constexpr QLatin1StringView path { "/com/orvanta/focus/OrvantaFocusDNSProxy" };
inline constexpr QLatin1StringView interface { "com.orvanta.focus.Filter1" };
inline constexpr QLatin1StringView notification { "Notification" };
inline constexpr QLatin1StringView approvalNeeded { "com.orvanta.focus.Error.ApprovalNeeded" };

/// Whether the bus may start an authentication dialog for a call, and wait for the user.
enum class Interaction { never, allowed };

/// Whether the bus may start the daemon for a call. Once it was there, whoever ended it decides when it runs again, and a mere
/// question is no reason to start it.
enum class Start { ifNeeded, never };

/// Calls `method` and hands the answer to `answered` from the event loop, in the thread of `context`; not at all once
/// `context` is gone.
void call(QObject& context, QLatin1StringView method, const QVariantList& arguments, Start start, Interaction interaction,
    Callback<const QDBusMessage&> answered);

/// True if `answer` says that there is no daemon to be had on this machine.
[[nodiscard]] bool isAbsent(const QDBusMessage& answer);

/// What went wrong, in words for the user.
[[nodiscard]] PlatformError errorOf(const QDBusMessage& answer);

} // namespace Filterd

} // namespace orvanta
