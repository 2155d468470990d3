#pragma once

#include "platform/linux/application_identity_rules.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta {

/// The folders in which applications' desktop entries stand, the most important first: of the user, of the system, and of
/// flatpak and snap also where the session does not name them.
[[nodiscard]] std::vector<std::string> applicationFolders();

/// The desktop entries of some folders, read when first asked for, and again where something has changed. What stands in
/// an earlier folder hides what has the same id in a later one. Each thread that needs it has one of its own.
class DesktopEntryIndex {
public:
    explicit DesktopEntryIndex(std::vector<std::string> folders = applicationFolders());

    /// The entries as they were at the last refresh(); the first call reads them.
    [[nodiscard]] const DesktopEntryTable& entries();

    /// Looks whether entries were added, replaced or removed, and reads those. Costs one look at each folder when nothing has.
    /// An entry that was changed in place, which neither packages nor editors do, is noticed with the next such change.
    void refresh();

    /// Grows with every change of entries().
    [[nodiscard]] std::uint64_t generation() const { return m_generation; }

private:
    /// What tells one state of a file or folder from another.
    struct Stamp {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t changedSeconds = 0;
        std::int64_t changedNanoseconds = 0;
        std::int64_t size = 0;

        bool operator==(const Stamp&) const = default;
    };
    struct Folder {
        std::string path;
        Stamp stamp;
    };
    struct File {
        Stamp stamp;
        bool isApplication = false;
        bool isHidden = false; ///< hides those of later folders, too
        DesktopEntryRecord record;
    };
    using Files = std::unordered_map<std::string, File>;
    struct Scan;

    [[nodiscard]] static Stamp stampOf(const std::string& path);
    [[nodiscard]] bool isUpToDate() const;
    void read();
    void readFile(const std::string& path, const std::string& id, Scan& scan);

    std::vector<std::string> m_roots;
    std::vector<Folder> m_folders; ///< every folder that was looked into, absent ones too
    Files m_files;                 ///< by path
    DesktopEntryTable m_entries;
    std::uint64_t m_generation = 0;
    bool m_isRead = false;
    bool m_mayHaveMissedChanges = false;
};

} // namespace orvanta
