// Whatever is typed: what the rule accepts has a dot and no slash, and the list stays sorted and distinct.

#include "app/policy/blocked_domains.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto lines = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)).split(QChar(u'\n'));
    orvanta::BlockedDomains domains;
    for (const QString& line : lines) {
        const auto domain = orvanta::normalisedDomain(line);
        if (!domain)
            continue;
        if (!domain->contains(QChar(u'.')) || domain->contains(QChar(u'/')))
            std::abort();
        domains.add(*domain);
        if (!domains.values().contains(*domain))
            std::abort();
    }
    const QStringList values = domains.values();
    if (std::ranges::adjacent_find(values, [](const QString& left, const QString& right) { return !orvanta::standsBefore(left, right); })
        != values.end())
        std::abort();
    return 0;
}
