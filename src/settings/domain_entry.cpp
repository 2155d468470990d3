#include "settings/domain_entry.h"

#include "app/policy/policy_text.h"

namespace orvanta {

bool isWorthSaving(const QString& domain)
{
    return !trimmedWhiteSpaceAndLineBreaks(domain).isEmpty();
}

void DomainEntry::setDomain(const QString& domain)
{
    if (m_domain == domain)
        return;
    m_domain = domain;
    Q_EMIT domainChanged();
}

} // namespace orvanta
