#pragma once

#include "app/policy/blocked_application.h"
#include "platform/key_value_store.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace orvanta::StoredLists {

/// The keys of the two lists, the same in the user defaults and in the cloud store.
inline const QString domainsKey = QStringLiteral("blockedDomains");
inline const QString applicationsKey = QStringLiteral("blockedApplications");

/// The stored domains; absent unless the value is an array of nothing but texts.
[[nodiscard]] std::optional<QStringList> domains(KeyValueStore& store);

/// The stored applications; absent unless the value is data that decodes whole.
[[nodiscard]] std::optional<std::vector<BlockedApplication>> applications(KeyValueStore& store);

} // namespace orvanta::StoredLists
