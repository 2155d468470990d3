#include "platform/linux/desktop_entry_walk.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

/// Folders in folders make ids such as "kde4-kate.desktop"; nobody nests deeper than two or three, and links may make rings.
constexpr int deepest = 6;

constexpr std::string_view suffix = ".desktop";

/// False once the visitor has had enough.
bool walk(const std::string& path, const std::string& prefix, int depth, const DesktopEntryVisitor& visitor)
{
    visitor.folder(path);
    std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), ::closedir);
    if (!folder)
        return true;

    // Sorted, so that which of two equal entries goes before does not hang on the file system.
    std::vector<std::pair<std::string, bool>> children;
    while (const dirent* child = ::readdir(folder.get())) {
        std::string name = static_cast<const char*>(child->d_name);
        if (name.starts_with('.'))
            continue;
        const bool isEntry = name.ends_with(suffix) && child->d_type != DT_DIR;
        if (isEntry || child->d_type == DT_DIR || child->d_type == DT_LNK || child->d_type == DT_UNKNOWN)
            children.emplace_back(std::move(name), isEntry);
    }
    folder.reset();
    std::ranges::sort(children);
    return std::ranges::all_of(children, [&](const auto& child) {
        const std::string childPath = std::string(path).append("/").append(child.first);
        if (child.second)
            return visitor.entry(childPath, prefix + child.first);
        return depth >= deepest || walk(childPath, std::string(prefix).append(child.first).append("-"), depth + 1, visitor);
    });
}

} // namespace

void walkDesktopEntries(const std::string& root, const DesktopEntryVisitor& visitor)
{
    walk(root, {}, 0, visitor);
}

} // namespace orvanta
