#pragma once

#include <QString>

#include <expected>
#include <optional>
#include <utility>

namespace orvanta::localservice {

/// Where the service keeps its database and its key if it is not told otherwise: "orvanta-service" in the XDG data home.
[[nodiscard]] QString defaultDataFolder();

/// Makes the folder with its parents, for its owner alone (mode 0700). A folder that is there already and open to others is
/// closed to them if nothing but the service's own files is in it, and left as it is otherwise (the files are private
/// in any case). Gives a line for the person if something was mended or should be known; fails with one if the folder
/// cannot be had.
[[nodiscard]] std::expected<std::optional<QString>, QString> prepareDataFolder(const QString& folder);

/// The right to serve a data folder, which one process has at a time; it ends with the process, however that ends.
class FolderLock {
public:
    /// Fails with a line for the person if another process has it.
    [[nodiscard]] static std::expected<FolderLock, QString> take(const QString& folder);

    FolderLock(FolderLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    FolderLock& operator=(FolderLock&&) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor) : m_descriptor(descriptor) { }

    int m_descriptor;
};

} // namespace orvanta::localservice
