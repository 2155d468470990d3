#pragma once

#include "app/policy/blocked_application.h"
#include "service/focus_api_error.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <expected>
#include <vector>

namespace orvanta {

/// What the service knows of the user's work.
struct FocusStateResponse {
    bool active = false; ///< work is in progress
    std::int64_t inProgressTaskCount = 0;
    std::int64_t policyRevision = 0;

    bool operator==(const FocusStateResponse&) const = default;
};

/// The blocking policy as the service holds it.
struct FocusPolicyResponse {
    std::int64_t revision = 0;
    QStringList blockedDomains;
    std::vector<BlockedApplication> blockedApplications;

    bool operator==(const FocusPolicyResponse&) const = default;
};

/// One change of the policy that is asked of the service.
struct FocusPolicyMutation {
    enum class Action { addDomain, removeDomain, addApplication, removeApplication };

    Action action;
    QString value; ///< the domain, or the application's bundle identifier

    bool operator==(const FocusPolicyMutation&) const = default;
};

/// Decoding is strict about the keys that it knows: each must be there and have its type. A number written with a
/// fraction or an exponent is an integer if its value is one and fits; true and false are no numbers. Unknown keys
/// are ignored. Pure functions: any bytes may be given.
[[nodiscard]] std::expected<FocusStateResponse, DecodeError> decodeFocusState(const QByteArray& body);
[[nodiscard]] std::expected<FocusPolicyResponse, DecodeError> decodeFocusPolicy(const QByteArray& body);

/// An object with the keys "action" and "value", in that order.
[[nodiscard]] std::expected<QByteArray, EncodeError> encodeMutation(const FocusPolicyMutation& mutation);

} // namespace orvanta
