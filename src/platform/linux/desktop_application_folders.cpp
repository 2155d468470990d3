#include "platform/linux/desktop_application_folders.h"

#include "platform/linux/application_identity.h"
#include "platform/linux/application_identity_browsers.h"
#include "platform/linux/desktop_entry_walk.h"
#include "platform/portable/bounded_file.h"

#include <QFile>

#include <algorithm>
#include <unordered_set>

namespace orvanta {

namespace {

/// A bound against folders made to exhaust us.
constexpr std::size_t mostEntries = 50'000;

QUrl urlOf(const std::string& path)
{
    return QUrl::fromLocalFile(QFile::decodeName(path.c_str()));
}

std::string pathOf(const QUrl& url)
{
    return QFile::encodeName(url.adjusted(QUrl::StripTrailingSlash).toLocalFile()).toStdString();
}

struct Place {
    std::string path;
    std::string id;
};

std::vector<Place> entriesIn(const std::string& folder)
{
    std::vector<Place> places;
    walkDesktopEntries(folder, { .entry = [&places](const std::string& path, const std::string& id) {
        places.push_back({ path, id });
        return places.size() < mostEntries;
    } });
    return places;
}

} // namespace

DesktopApplicationFolders::DesktopApplicationFolders(std::vector<std::string> folders, DesktopSession session)
    : m_folders(std::move(folders))
    , m_session(std::move(session))
    , m_own(OwnApplication::current().identifier)
{
}

std::vector<QUrl> DesktopApplicationFolders::defaults() const
{
    std::vector<QUrl> urls;
    std::ranges::transform(m_folders, std::back_inserter(urls), urlOf);
    return urls;
}

std::vector<ApplicationRecord> DesktopApplicationFolders::records(const QUrl& folder) const
{
    const std::string path = pathOf(folder);
    const std::vector<Place> places = entriesIn(path);
    if (places.empty())
        return {};

    std::unordered_set<std::string> taken;
    if (const auto here = std::ranges::find(m_folders, path); here != m_folders.end()) {
        for (auto before = m_folders.begin(); before != here; ++before) {
            for (Place& place : entriesIn(*before))
                taken.insert(std::move(place.id));
        }
    }
    std::vector<ApplicationRecord> records;
    records.reserve(places.size());
    std::vector<char> buffer;
    for (const Place& place : places) {
        if (taken.contains(place.id))
            continue;
        if (auto record = recordOf(place.path, place.id, buffer))
            records.push_back(*std::move(record));
    }
    return records;
}

std::optional<ApplicationRecord> DesktopApplicationFolders::record(const QUrl& applicationURL) const
{
    const std::string path = pathOf(applicationURL);
    std::string id = path.substr(path.rfind('/') + 1);
    for (const std::string& folder : m_folders) {
        if (!path.starts_with(folder + "/"))
            continue;
        id = path.substr(folder.size() + 1);
        std::ranges::replace(id, '/', '-');
        break;
    }
    std::vector<char> buffer;
    return recordOf(path, id, buffer);
}

std::optional<ApplicationRecord> DesktopApplicationFolders::recordOf(const std::string& path, const std::string& id, std::vector<char>& buffer) const
{
    const auto bytes = readBoundedFile(path.c_str(), desktopEntryLimit, buffer);
    if (!bytes)
        return std::nullopt;
    auto entry = parseDesktopEntry(*bytes, m_session.languages);
    if (!entry || !isInstalled(*entry, m_session))
        return std::nullopt;
    const QString identifier = QString::fromStdString(id);
    return ApplicationRecord { .applicationURL = urlOf(path),
        .bundleIdentifier = browserOfDesktopEntry(identifier).value_or(identifier),
        .uiElement = !isListed(*entry, m_session),
        .backgroundOnly = {},
        .bundleDisplayName = std::move(entry->name),
        .bundleName = {} };
}

} // namespace orvanta
