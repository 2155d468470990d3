#include "blocking/installed_application_catalog.h"

#include "app/policy/policy_text.h"
#include "blocking/natural_order.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

/// "Foo Bar" of ".../Foo Bar.app".
QString nameOfFile(const QUrl& url)
{
    const QString name = url.adjusted(QUrl::StripTrailingSlash).fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.first(dot) : name;
}

std::vector<InstalledApplication> sorted(QHash<QString, InstalledApplication> applications, const NaturalOrder& order)
{
    struct Keyed {
        QCollatorSortKey key;
        InstalledApplication application;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(static_cast<std::size_t>(applications.size()));
    for (InstalledApplication& application : applications)
        keyed.push_back({ order.key(application.displayName), std::move(application) });
    std::ranges::sort(keyed, [](const Keyed& left, const Keyed& right) {
        const int compared = left.key.compare(right.key);
        // Names that compare equal may stand in any order; this one is the same every time.
        return compared != 0 ? compared < 0 : left.application.bundleIdentifier < right.application.bundleIdentifier;
    });

    std::vector<InstalledApplication> result;
    result.reserve(keyed.size());
    for (Keyed& entry : keyed)
        result.push_back(std::move(entry.application));
    return result;
}

} // namespace

std::optional<InstalledApplication> InstalledApplication::make(const ApplicationRecord& record)
{
    if (!record.bundleIdentifier)
        return std::nullopt;
    QString identifier = trimmedWhiteSpaceAndLineBreaks(*record.bundleIdentifier);
    if (identifier.isEmpty() || record.uiElement.value_or(false) || record.backgroundOnly.value_or(false))
        return std::nullopt;
    QString name = record.bundleDisplayName ? *record.bundleDisplayName : record.bundleName ? *record.bundleName : nameOfFile(record.applicationURL);
    return InstalledApplication {
        .displayName = std::move(name), .bundleIdentifier = std::move(identifier), .applicationURL = record.applicationURL
    };
}

std::size_t qHash(const InstalledApplication& application, std::size_t seed) noexcept
{
    return qHashMulti(seed, application.displayName, application.bundleIdentifier, application.applicationURL);
}

InstalledApplicationCatalog::InstalledApplicationCatalog(const ApplicationFolders& folders) : m_folders(folders) { }

std::vector<QUrl> InstalledApplicationCatalog::defaultDirectories() const
{
    return m_folders.defaults();
}

std::vector<InstalledApplication> InstalledApplicationCatalog::applications(
    const std::vector<QUrl>& directories, const QSet<QString>& excluding) const
{
    const NaturalOrder order;
    QHash<QString, InstalledApplication> applications;
    for (const QUrl& directory : directories) {
        for (const ApplicationRecord& record : m_folders.records(directory)) {
            auto application = InstalledApplication::make(record);
            if (!application || excluding.contains(application->bundleIdentifier))
                continue;
            const auto present = applications.find(application->bundleIdentifier);
            if (present == applications.end())
                applications.insert(application->bundleIdentifier, *std::move(application));
            else if (order.compare(present->displayName, application->displayName) > 0)
                *present = *std::move(application);
        }
    }
    return sorted(std::move(applications), order);
}

std::vector<InstalledApplication> InstalledApplicationCatalog::applications(const QSet<QString>& excluding) const
{
    return applications(defaultDirectories(), excluding);
}

} // namespace orvanta
