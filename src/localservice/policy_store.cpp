#include "localservice/policy_store.h"

#include "app/policy/blocked_applications.h"
#include "app/policy/blocked_domains.h"

#include <array>
#include <utility>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;
using Action = PolicyMutation::Action;

namespace {

bool isAboutDomains(Action action)
{
    return action == Action::addDomain || action == Action::removeDomain;
}

std::vector<BlockedApplication> loadApplications(Database& database)
{
    std::vector<BlockedApplication> applications;
    Query query(database, "SELECT bundle_identifier, display_name FROM blocked_applications ORDER BY position");
    while (query.next())
        applications.push_back({ query.text(0), query.text(1) });
    return applications;
}

} // namespace

std::optional<Action> policyAction(const QString& name)
{
    constexpr std::array names {
        std::pair { "add_domain"_L1, Action::addDomain },
        std::pair { "remove_domain"_L1, Action::removeDomain },
        std::pair { "add_application"_L1, Action::addApplication },
        std::pair { "remove_application"_L1, Action::removeApplication },
    };
    for (const auto& [known, action] : names)
        if (name == known)
            return action;
    return std::nullopt;
}

std::optional<PolicyMutation> acceptedMutation(const PolicyMutation& mutation)
{
    if (isAboutDomains(mutation.action)) {
        auto domain = normalisedDomain(mutation.value);
        if (!domain)
            return std::nullopt;
        return PolicyMutation { mutation.action, *std::move(domain) };
    }
    auto application = acceptedApplication(mutation.value, mutation.value);
    if (!application)
        return std::nullopt;
    return PolicyMutation { mutation.action, std::move(application->bundleIdentifier) };
}

std::expected<Policy, StoreError> PolicyStore::policy() const
{
    return attempt([&] {
        const Transaction oneMoment(*m_database, Transaction::Purpose::read);
        return load();
    });
}

std::expected<qint64, StoreError> PolicyStore::revision() const
{
    return attempt([&] {
        Query query(*m_database, "SELECT revision FROM policy");
        return query.next() ? query.integer(0) : 0;
    });
}

std::expected<Policy, StoreError> PolicyStore::apply(const PolicyMutation& mutation)
{
    return attempt([&] {
        Transaction transaction(*m_database);
        const bool changed = isAboutDomains(mutation.action) ? changeDomains(mutation) : changeApplications(mutation);
        if (changed)
            m_database->run("UPDATE policy SET revision = revision + 1");
        Policy policy = load();
        transaction.commit();
        return policy;
    });
}

Policy PolicyStore::load() const
{
    Policy policy;
    {
        Query query(*m_database, "SELECT revision FROM policy");
        if (query.next())
            policy.revision = query.integer(0);
    }
    // SQLite compares texts by their UTF-8 bytes, which is the order by code point.
    Query query(*m_database, "SELECT domain FROM blocked_domains ORDER BY domain");
    while (query.next())
        policy.blockedDomains.append(query.text(0));
    policy.blockedApplications = loadApplications(*m_database);
    return policy;
}

bool PolicyStore::changeDomains(const PolicyMutation& mutation)
{
    if (mutation.action == Action::addDomain)
        m_database->run("INSERT INTO blocked_domains (domain) VALUES (?) ON CONFLICT DO NOTHING", mutation.value);
    else
        m_database->run("DELETE FROM blocked_domains WHERE domain = ?", mutation.value);
    return m_database->changedRows() > 0;
}

bool PolicyStore::changeApplications(const PolicyMutation& mutation)
{
    const auto before = loadApplications(*m_database);
    auto after = before;
    if (mutation.action == Action::addApplication)
        addApplication(after, { mutation.value, mutation.value });
    else
        removeApplication(after, mutation.value);
    if (after == before)
        return false;
    m_database->run("DELETE FROM blocked_applications");
    qint64 position = 0;
    for (const BlockedApplication& application : after)
        m_database->run("INSERT INTO blocked_applications (position, bundle_identifier, display_name) VALUES (?, ?, ?)", ++position,
            application.bundleIdentifier, application.displayName);
    return true;
}

} // namespace orvanta::localservice
