#pragma once

#include "platform/application_folders.h"

#include <QSet>
#include <QString>
#include <QUrl>

#include <cstddef>
#include <optional>
#include <vector>

namespace orvanta {

/// An installed application that the user can choose to block.
struct InstalledApplication {
    using ID = QString;

    QString displayName;      ///< shown to the user
    QString bundleIdentifier; ///< without white space and line breaks at its ends; never empty
    QUrl applicationURL;      ///< of its bundle, or of its desktop entry

    /// What tells it from the others in a list.
    [[nodiscard]] const ID& id() const { return bundleIdentifier; }

    /// The application that a record is of; absent if it has no identifier, or if it is an agent or works in the
    /// background only.
    [[nodiscard]] static std::optional<InstalledApplication> make(const ApplicationRecord& record);

    bool operator==(const InstalledApplication&) const = default;
};

[[nodiscard]] std::size_t qHash(const InstalledApplication& application, std::size_t seed = 0) noexcept;

/// Lists the applications that are installed on the machine. Reads the file system and takes its time; for any thread,
/// and for several at once. Keeps nothing: each scan is a fresh one.
class InstalledApplicationCatalog {
public:
    /// `folders` outlives the catalogue.
    explicit InstalledApplicationCatalog(const ApplicationFolders& folders);

    /// The folders that are scanned if no others are named, the most important first.
    [[nodiscard]] std::vector<QUrl> defaultDirectories() const;

    /// Every application in the folders, in natural order of their names, without those whose identifiers are in
    /// `excluding`. Of several with one identifier, the one whose name stands first is listed; of equal names the first
    /// that is found.
    [[nodiscard]] std::vector<InstalledApplication> applications(const std::vector<QUrl>& directories, const QSet<QString>& excluding) const;

    /// The same for the default folders.
    [[nodiscard]] std::vector<InstalledApplication> applications(const QSet<QString>& excluding) const;

private:
    const ApplicationFolders& m_folders;
};

} // namespace orvanta
