#include "platform/linux/desktop_entry_index.h"

#include "platform/linux/desktop_entry_walk.h"
#include "platform/portable/desktop_entry.h"

#include <QByteArray>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <sys/stat.h>
#include <unordered_set>

namespace orvanta {

namespace {

/// A bound against folders made to exhaust us.
constexpr std::size_t mostFiles = 50'000;

/// The coarsest time stamps that file systems in use give: a folder changed this shortly before it was read may have
/// changed again under the same stamp.
constexpr std::int64_t coarsestStampSeconds = 2;

void append(std::vector<std::string>& folders, std::string folder)
{
    if (std::ranges::find(folders, folder) == folders.end())
        folders.push_back(std::move(folder));
}

std::string environment(const char* name, const std::string& otherwise)
{
    const QByteArray value = qgetenv(name);
    return value.isEmpty() ? otherwise : value.toStdString();
}

std::int64_t secondsNow()
{
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace

/// One pass over all folders, in the making.
struct DesktopEntryIndex::Scan {
    std::vector<std::string> languages = desktopEntryLanguages();
    std::vector<Folder> folders;
    Files files;
    std::vector<const File*> order; ///< of ids that nothing before has taken
    std::unordered_set<std::string> takenIds;
    bool hasChanges = false;
};

std::vector<std::string> applicationFolders()
{
    const std::string home = qgetenv("HOME").toStdString();
    const std::string dataHome = environment("XDG_DATA_HOME", home + "/.local/share");
    std::vector<std::string> folders;
    append(folders, dataHome + "/applications");
    for (const QByteArray& folder : QByteArray::fromStdString(environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share")).split(':')) {
        if (folder.startsWith('/'))
            append(folders, (folder.endsWith('/') ? folder.chopped(1) : folder).toStdString() + "/applications");
    }
    append(folders, dataHome + "/flatpak/exports/share/applications");
    append(folders, "/var/lib/flatpak/exports/share/applications");
    append(folders, "/var/lib/snapd/desktop/applications");
    return folders;
}

DesktopEntryIndex::DesktopEntryIndex(std::vector<std::string> folders) : m_roots(std::move(folders)) { }

const DesktopEntryTable& DesktopEntryIndex::entries()
{
    if (!m_isRead)
        read();
    return m_entries;
}

void DesktopEntryIndex::refresh()
{
    if (!m_isRead || !isUpToDate())
        read();
}

DesktopEntryIndex::Stamp DesktopEntryIndex::stampOf(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return { .device = status.st_dev,
        .inode = status.st_ino,
        .changedSeconds = status.st_mtim.tv_sec,
        .changedNanoseconds = status.st_mtim.tv_nsec,
        .size = status.st_size };
}

bool DesktopEntryIndex::isUpToDate() const
{
    return !m_mayHaveMissedChanges && std::ranges::all_of(m_folders, [](const Folder& folder) { return stampOf(folder.path) == folder.stamp; });
}

void DesktopEntryIndex::read()
{
    const std::int64_t begin = secondsNow();
    Scan scan;
    scan.hasChanges = !m_isRead;
    const DesktopEntryVisitor visitor {
        .folder = [&scan](const std::string& path) { scan.folders.push_back({ .path = path, .stamp = stampOf(path) }); },
        .entry =
            [this, &scan](const std::string& path, const std::string& id) {
                if (scan.files.size() >= mostFiles)
                    return false;
                readFile(path, id, scan);
                return true;
            },
    };
    for (const std::string& root : m_roots)
        walkDesktopEntries(root, visitor);
    scan.hasChanges = scan.hasChanges || scan.files.size() != m_files.size();

    if (scan.hasChanges) {
        std::vector<DesktopEntryRecord> records;
        records.reserve(scan.order.size());
        for (const File* file : scan.order) {
            if (file->isApplication && !file->isHidden)
                records.push_back(file->record);
        }
        m_entries = DesktopEntryTable(std::move(records));
        ++m_generation;
    }
    m_folders = std::move(scan.folders);
    m_files = std::move(scan.files);
    m_isRead = true;
    m_mayHaveMissedChanges = std::ranges::any_of(
        m_folders, [begin](const Folder& folder) { return std::abs(begin - folder.stamp.changedSeconds) <= coarsestStampSeconds; });
}

void DesktopEntryIndex::readFile(const std::string& path, const std::string& id, Scan& scan)
{
    const Stamp stamp = stampOf(path);
    File file;
    if (const auto known = m_files.find(path); known != m_files.end() && known->second.stamp == stamp) {
        file = known->second;
    } else {
        scan.hasChanges = true;
        file.stamp = stamp;
        if (const auto entry = readDesktopEntry(path, scan.languages)) {
            const QStringList words = desktopEntryCommand(entry->exec.value_or(QString()));
            file.isApplication = entry->type.value_or(QString()) == QLatin1String("Application");
            file.isHidden = entry->hidden;
            file.record = { .id = QString::fromStdString(id),
                .name = entry->name.value_or(QString()),
                .startupWmClass = entry->startupWmClass.value_or(QString()),
                .program = programOfCommand(words),
                .words = words.size(),
                .isListed = !entry->noDisplay };
        }
    }
    const auto [place, isNew] = scan.files.emplace(path, std::move(file));
    if (isNew && scan.takenIds.insert(id).second)
        scan.order.push_back(&place->second);
}

} // namespace orvanta
