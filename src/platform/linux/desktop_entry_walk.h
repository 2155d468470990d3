#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace orvanta {

/// What a walk through a folder of desktop entries comes across.
struct DesktopEntryVisitor {
    /// A folder, before it is looked into; also one that turns out not to be there.
    std::function<void(const std::string& path)> folder = [](const std::string&) { };

    /// An entry: what stands in folders in the folder bears their names in its id ("kde4-kate.desktop"). False ends the walk.
    std::function<bool(const std::string& path, const std::string& id)> entry;
};

/// Walks through the desktop entries in `root`, in the order of their names. Hidden files are passed over, links are
/// followed; folders that are nested deeper than anybody nests them, as rings of links are, are not entered.
void walkDesktopEntries(const std::string& root, const DesktopEntryVisitor& visitor);

} // namespace orvanta
