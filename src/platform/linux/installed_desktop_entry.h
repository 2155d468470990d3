#pragma once

#include "platform/portable/desktop_entry.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// What decides, beside the entry itself, whether it is of an application that is installed and shown in this session. A
/// value that is taken once, so that any thread may use a copy of it.
struct DesktopSession {
    std::vector<std::string> languages;  ///< as desktopEntryLanguages() gives them
    QStringList desktops;                ///< the names of the running desktop
    std::vector<std::string> binFolders; ///< where commands are looked for

    /// From the process's environment.
    [[nodiscard]] static DesktopSession current();
};

/// Whether the entry is of an application, and of one that is there: not one that was taken away by an entry that hides it,
/// and not one whose program is missing.
[[nodiscard]] bool isInstalled(const DesktopEntry& entry, const DesktopSession& session);

/// Whether the desktop's menus show it.
[[nodiscard]] bool isListed(const DesktopEntry& entry, const DesktopSession& session);

} // namespace orvanta
