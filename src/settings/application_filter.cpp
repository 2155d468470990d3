#include "settings/application_filter.h"

#include "app/policy/policy_text.h"
#include "blocking/installed_application_catalog.h"

#include <numeric>

namespace orvanta {

ApplicationFilter::ApplicationFilter(std::span<const InstalledApplication> applications, const QLocale& locale) : m_locale(locale)
{
    m_folded.reserve(applications.size());
    for (const InstalledApplication& application : applications)
        m_folded.push_back({ folded(application.displayName), folded(application.bundleIdentifier) });
}

std::vector<int> ApplicationFilter::matching(const QString& searchText) const
{
    const QString query = folded(trimmedWhiteSpaceAndLineBreaks(searchText));
    if (query.isEmpty()) {
        std::vector<int> all(m_folded.size());
        std::iota(all.begin(), all.end(), 0);
        return all;
    }
    std::vector<int> found;
    for (std::size_t index = 0; index < m_folded.size(); ++index)
        if (m_folded[index].displayName.contains(query) || m_folded[index].bundleIdentifier.contains(query))
            found.push_back(static_cast<int>(index));
    return found;
}

/// By way of the locale's capitals, since only it knows that a Turkish i has a dotted one, and ß only there becomes SS; then
/// what stands in several small forms (σ and ς). Letters that are written with and without combining marks are made alike
/// before.
QString ApplicationFilter::folded(const QString& text) const
{
    return m_locale.toLower(m_locale.toUpper(text.normalized(QString::NormalizationForm_C))).toCaseFolded();
}

} // namespace orvanta
