#pragma once

#include "platform/application_directory.h"
#include "platform/linux/desktop_entry_index.h"
#include "platform/linux/icon_theme.h"
#include "platform/linux/installed_desktop_entry.h"

#include <string>
#include <vector>

namespace orvanta {

/// Where applications' desktop entries stand, and the icons that they name. It looks into the icon themes' files itself,
/// since Qt's own icons may be asked for on the main thread only.
class DesktopApplicationDirectory : public ApplicationDirectory {
public:
    /// To be made on the main thread, after the application object.
    explicit DesktopApplicationDirectory(std::vector<std::string> folders = applicationFolders(), DesktopSession session = DesktopSession::current(),
        IconThemes icons = IconThemes::current());

    [[nodiscard]] std::optional<QUrl> locate(const QString& bundleIdentifier) const override;
    [[nodiscard]] std::optional<QImage> icon(const QString& path, int pixelSize) const override;

private:
    [[nodiscard]] std::optional<std::string> entryWithId(const std::string& id) const;

    std::vector<std::string> m_folders;
    DesktopSession m_session;
    IconThemes m_icons;
};

} // namespace orvanta
