#include "app/policy/blocked_domains.h"

#include "app/policy/policy_text.h"

#include <QStringTokenizer>

#include <algorithm>

namespace orvanta {

using namespace Qt::StringLiterals;

std::optional<QString> normalisedDomain(const QString& text)
{
    QString rest = trimmedWhiteSpaceAndLineBreaks(text).toLower();
    rest.remove("https://"_L1);
    rest.remove("http://"_L1);
    const auto pieces = QStringView(rest).tokenize(u'/', Qt::SkipEmptyParts);
    const auto first = pieces.begin();
    if (first == pieces.end() || !(*first).contains(u'.'))
        return std::nullopt;
    return (*first).toString();
}

bool standsBefore(QStringView left, QStringView right)
{
    const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (l == left.end() || r == right.end())
        return l == left.end() && r != right.end();
    // The first differing units decide. A surrogate stands for a code point above every unit of the basic plane;
    // between two surrogates the order of the units is the order of the code points.
    const bool leftIsSurrogate = l->isSurrogate();
    const bool rightIsSurrogate = r->isSurrogate();
    if (leftIsSurrogate != rightIsSurrogate)
        return rightIsSurrogate;
    return *l < *r;
}

void BlockedDomains::add(const QString& domain)
{
    makeCanonical();
    const auto place = std::ranges::lower_bound(m_values, domain, standsBefore);
    if (place != m_values.end() && *place == domain)
        return;
    m_values.insert(place, domain);
}

void BlockedDomains::remove(const QString& domain)
{
    m_values.removeAll(domain);
}

void BlockedDomains::makeCanonical()
{
    if (m_isCanonical)
        return;
    if (!std::ranges::is_sorted(m_values, standsBefore))
        std::ranges::sort(m_values, standsBefore);
    const auto twice = std::ranges::unique(m_values);
    m_values.erase(twice.begin(), twice.end());
    m_isCanonical = true;
}

} // namespace orvanta
