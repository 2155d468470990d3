#include "app/policy/blocked_applications.h"

#include "app/policy/policy_text.h"

#include <QCollator>

#include <algorithm>

namespace orvanta {

namespace {

/// The user's own collation. Without a language (LANG=C) there is none, and a comparison by bytes would tear upper
/// and lower case apart: the order common to most languages takes its place.
QCollator nameCollator()
{
    const QLocale user = QLocale::system().collation();
    QCollator collator(user.language() == QLocale::C ? QLocale(QLocale::English) : user);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

} // namespace

std::optional<BlockedApplication> acceptedApplication(const QString& bundleIdentifier, const QString& displayName)
{
    BlockedApplication application { trimmedWhiteSpaceAndLineBreaks(bundleIdentifier), trimmedWhiteSpaceAndLineBreaks(displayName) };
    if (!application.bundleIdentifier.contains(u'.') || application.displayName.isEmpty())
        return std::nullopt;
    return application;
}

void addApplication(std::vector<BlockedApplication>& list, BlockedApplication application)
{
    removeApplication(list, application.bundleIdentifier);
    list.push_back(std::move(application));

    struct Keyed {
        QCollatorSortKey key;
        std::size_t index;
    };
    const QCollator collator = nameCollator();
    std::vector<Keyed> order;
    order.reserve(list.size());
    for (std::size_t index = 0; index < list.size(); ++index)
        order.push_back({ collator.sortKey(list[index].displayName), index });
    std::ranges::sort(order, [](const Keyed& left, const Keyed& right) {
        const int compared = left.key.compare(right.key);
        return compared != 0 ? compared < 0 : left.index < right.index; // equal names keep their order
    });

    std::vector<BlockedApplication> sorted;
    sorted.reserve(list.size());
    for (const Keyed& entry : order)
        sorted.push_back(std::move(list[entry.index]));
    list = std::move(sorted);
}

void removeApplication(std::vector<BlockedApplication>& list, const QString& bundleIdentifier)
{
    std::erase_if(list, [&](const BlockedApplication& listed) { return listed.bundleIdentifier == bundleIdentifier; });
}

QSet<QString> blockedBundleIdentifiers(const std::vector<BlockedApplication>& list)
{
    QSet<QString> identifiers;
    identifiers.reserve(static_cast<qsizetype>(list.size()));
    for (const auto& application : list)
        identifiers.insert(application.bundleIdentifier);
    return identifiers;
}

} // namespace orvanta
