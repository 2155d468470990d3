#pragma once

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace orvanta {

/// What one installed application says of itself, before any rule is applied to it. What is missing, or of another type
/// than the one named, is absent.
struct ApplicationRecord {
    QUrl applicationURL;                      ///< a file URL: the application's bundle, or its desktop entry
    std::optional<QString> bundleIdentifier;  ///< as it is written, blanks included
    std::optional<bool> uiElement;            ///< LSUIElement: an agent, which has no place among the applications
    std::optional<bool> backgroundOnly;       ///< LSBackgroundOnly
    std::optional<QString> bundleDisplayName; ///< CFBundleDisplayName; may be empty
    std::optional<QString> bundleName;        ///< CFBundleName; may be empty

    bool operator==(const ApplicationRecord&) const = default;
};

/// The folders in which applications are installed. Every operation reads the file system and may take a while, keeps
/// nothing between two calls, and may be called on any thread, also on several at once.
class ApplicationFolders {
public:
    virtual ~ApplicationFolders() = default;

    /// Where the system keeps applications, the most important folder first. A folder need not exist.
    [[nodiscard]] virtual std::vector<QUrl> defaults() const = 0;

    /// Every application in `folder`, at any depth, in the order in which the system enumerates them. Hidden files and
    /// folders are passed over, and so is what lies inside an application. None if the folder cannot be read.
    [[nodiscard]] virtual std::vector<ApplicationRecord> records(const QUrl& folder) const = 0;

    /// The application at `applicationURL`; absent if none can be opened there.
    [[nodiscard]] virtual std::optional<ApplicationRecord> record(const QUrl& applicationURL) const = 0;

    /// The bundle identifier of this program itself, as it would stand in its record; absent if it has none.
    [[nodiscard]] virtual std::optional<QString> ownBundleIdentifier() const = 0;
};

} // namespace orvanta
