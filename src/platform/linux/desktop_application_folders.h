#pragma once

#include "platform/application_folders.h"
#include "platform/linux/desktop_entry_index.h"
#include "platform/linux/installed_desktop_entry.h"

#include <string>
#include <vector>

namespace orvanta {

/// The applications that the session's desktop entries are of. An entry that menus do not show counts as an agent's; builds
/// of the known browsers bear those browsers' own identifiers, by which their windows are known too. What stands in one of
/// the default folders hides what has the same id in those after it, even if it only says that there is no such thing.
class DesktopApplicationFolders : public ApplicationFolders {
public:
    /// To be made on the main thread, after the application object.
    explicit DesktopApplicationFolders(std::vector<std::string> folders = applicationFolders(), DesktopSession session = DesktopSession::current());

    [[nodiscard]] std::vector<QUrl> defaults() const override;
    [[nodiscard]] std::vector<ApplicationRecord> records(const QUrl& folder) const override;
    [[nodiscard]] std::optional<ApplicationRecord> record(const QUrl& applicationURL) const override;
    [[nodiscard]] std::optional<QString> ownBundleIdentifier() const override { return m_own; }

private:
    [[nodiscard]] std::optional<ApplicationRecord> recordOf(const std::string& path, const std::string& id, std::vector<char>& buffer) const;

    std::vector<std::string> m_folders;
    DesktopSession m_session;
    QString m_own;
};

} // namespace orvanta
