#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <fcntl.h>
#include <string_view>
#include <vector>

namespace orvanta {

enum class BoundedFileError : std::uint8_t {
    unreadable, ///< no such file, no permission, or not a regular file
    tooLarge,
};

/// Reads a file that anybody may have put there. Never waits: a pipe or a device in a file's place is refused. `folder` is
/// an open folder that a relative `path` begins at. The bytes stand in `buffer`, which may be used again and again.
[[nodiscard]] std::expected<std::string_view, BoundedFileError> readBoundedFile(
    const char* path, std::size_t limit, std::vector<char>& buffer, int folder = AT_FDCWD);

} // namespace orvanta
