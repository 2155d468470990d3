#pragma once

#include "app/policy/blocked_application.h"
#include "localservice/database.h"

#include <QStringList>

#include <vector>

namespace orvanta::localservice {

/// What is blocked, and how many real changes it has been through.
struct Policy {
    qint64 revision = 0;
    QStringList blockedDomains;                          ///< sorted by code point, each once
    std::vector<BlockedApplication> blockedApplications; ///< in the order in which lists show them
};

/// One change, as clients ask for it; the value is a domain, or an application's bundle identifier.
struct PolicyMutation {
    enum class Action : std::uint8_t { addDomain, removeDomain, addApplication, removeApplication };

    Action action = Action::addDomain;
    QString value;
};

/// Absent unless `name` is exactly one of "add_domain", "remove_domain", "add_application" and "remove_application".
[[nodiscard]] std::optional<PolicyMutation::Action> policyAction(const QString& name);

/// `mutation` with its value brought to the form in which it is stored. Absent if the value is no domain (for the
/// domain actions) or no bundle identifier (for the others).
[[nodiscard]] std::optional<PolicyMutation> acceptedMutation(const PolicyMutation& mutation);

/// The policy of the database. A light view; the database must outlive it.
class PolicyStore {
public:
    explicit PolicyStore(Database& database) : m_database(&database) { }

    [[nodiscard]] std::expected<Policy, StoreError> policy() const;

    [[nodiscard]] std::expected<qint64, StoreError> revision() const;

    /// Applies an accepted mutation and returns the policy after it. The revision grows by one if the lists are
    /// not what they were; adding what is there or removing what is not changes nothing.
    [[nodiscard]] std::expected<Policy, StoreError> apply(const PolicyMutation& mutation);

private:
    [[nodiscard]] Policy load() const;
    [[nodiscard]] bool changeDomains(const PolicyMutation& mutation);
    [[nodiscard]] bool changeApplications(const PolicyMutation& mutation);

    Database* m_database;
};

} // namespace orvanta::localservice
