#include "app/stored_lists.h"

namespace orvanta::StoredLists {

std::optional<QStringList> domains(KeyValueStore& store)
{
    auto stored = store.value(domainsKey);
    auto* list = stored ? std::get_if<QStringList>(&*stored) : nullptr;
    return list ? std::optional(std::move(*list)) : std::nullopt;
}

std::optional<std::vector<BlockedApplication>> applications(KeyValueStore& store)
{
    const auto stored = store.value(applicationsKey);
    const auto* data = stored ? std::get_if<QByteArray>(&*stored) : nullptr;
    return data ? decodeBlockedApplications(*data) : std::nullopt;
}

} // namespace orvanta::StoredLists
