#pragma once

#include <QImage>
#include <QString>
#include <QUrl>

#include <optional>

namespace orvanta {

/// Where an application is installed, and how it looks. Both operations read the file system and may take a while (an
/// icon that is drawn from vectors some milliseconds), keep nothing between two calls, and may be called on any thread,
/// also on several at once. Whoever shows many icons keeps them.
class ApplicationDirectory {
public:
    virtual ~ApplicationDirectory() = default;

    /// Where the application with this identifier is installed: a file URL of its bundle, or of its desktop entry.
    /// Absent if it is not installed.
    [[nodiscard]] virtual std::optional<QUrl> locate(const QString& bundleIdentifier) const = 0;

    /// The icon of the application at `path` (the local path of locate()'s answer, or of an InstalledApplication's
    /// applicationURL), as large as fits into a square of `pixelSize` physical pixels with its proportions kept; smaller
    /// if the application has no larger one. Absent if it has none at all: a stand-in is the view's business.
    [[nodiscard]] virtual std::optional<QImage> icon(const QString& path, int pixelSize) const = 0;
};

} // namespace orvanta
