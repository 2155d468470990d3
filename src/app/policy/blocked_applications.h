#pragma once

#include "app/policy/blocked_application.h"

#include <QSet>

namespace orvanta {

/// The pair with both texts trimmed; absent unless the identifier contains "." and the name is not empty.
[[nodiscard]] std::optional<BlockedApplication> acceptedApplication(const QString& bundleIdentifier, const QString& displayName);

/// Puts `application` into `list` in place of every entry with its identifier, then sorts by display name: localised,
/// case-insensitive, stable.
void addApplication(std::vector<BlockedApplication>& list, BlockedApplication application);

/// Takes every entry with `bundleIdentifier` away.
void removeApplication(std::vector<BlockedApplication>& list, const QString& bundleIdentifier);

/// The identifiers of the list.
[[nodiscard]] QSet<QString> blockedBundleIdentifiers(const std::vector<BlockedApplication>& list);

} // namespace orvanta
