#pragma once

#include <QString>
#include <QUrl>

#include <expected>
#include <optional>

namespace orvanta {

/// Where the Orvanta service is. Made once in main; the same for the whole run.
struct ServiceConfiguration {
    QUrl origin;           ///< scheme, host and port alone
    QUrl activityEndpoint; ///< origin with "/api/activity"
    QUrl blockedPage;      ///< origin with "/focus/blocked"

    /// From `builtInOrigin`, or from `override` (the value of ORVANTA_SERVICE_ORIGIN) if it is present. An override is
    /// taken only if it is https, or http on a loopback address; anything else gives an error line for the user.
    [[nodiscard]] static std::expected<ServiceConfiguration, QString> make(const QString& builtInOrigin, const std::optional<QString>& override);
};

} // namespace orvanta
