#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// Finds the files of icons in the themes that are installed, as the freedesktop.org icon themes lay them out. A value;
/// every search reads the file system anew, so that any thread may search, and what was installed since is found.
class IconThemes {
public:
    /// `folders` hold a folder for each theme, the most important first; `themes` are asked in turn, each with the themes
    /// that it inherits from, then the one that all applications install into; `looseFolders` hold icons of no theme.
    IconThemes(std::vector<std::string> folders, std::vector<std::string> themes, std::vector<std::string> looseFolders);

    /// The file of the icon `name` that serves best at `pixelSize` physical pixels: of the first theme that has it, the
    /// nearest size, rather larger than smaller. Absent if no theme has it, or if `name` is no plain name.
    [[nodiscard]] std::optional<std::string> find(const std::string& name, int pixelSize) const;

    /// The same as the session has it: its data folders, its chosen theme. On the main thread, after the application object.
    [[nodiscard]] static IconThemes current();

private:
    std::vector<std::string> m_folders;
    std::vector<std::string> m_themes;
    std::vector<std::string> m_looseFolders;
};

/// One folder of a theme, as its index describes it.
struct IconThemeFolder {
    std::string path; ///< below the theme
    int smallest = 0; ///< the sizes in physical pixels that it serves exactly
    int largest = 0;
    bool isForApplications = false;

    bool operator==(const IconThemeFolder&) const = default;
};

/// A theme's index.theme.
struct IconThemeIndex {
    std::vector<std::string> parents;
    std::vector<IconThemeFolder> folders;

    bool operator==(const IconThemeIndex&) const = default;
};

/// Reads the bytes of an index.theme, which may be anything; what is wrong in it is passed over.
[[nodiscard]] IconThemeIndex parseIconThemeIndex(std::string_view bytes);

} // namespace orvanta
