#include "platform/portable/bounded_file.h"

#include "platform/descriptor.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {

std::expected<std::string_view, BoundedFileError> readBoundedFile(const char* path, std::size_t limit, std::vector<char>& buffer, int folder)
{
    const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::unexpected(BoundedFileError::unreadable);
    const auto capacity = static_cast<std::size_t>(status.st_size);
    if (capacity > limit)
        return std::unexpected(BoundedFileError::tooLarge);

    if (buffer.size() < capacity)
        buffer.resize(capacity);
    std::size_t size = 0;
    while (size < capacity) {
        const ssize_t got = ::read(file.number(), buffer.data() + size, capacity - size);
        if (got < 0)
            return std::unexpected(BoundedFileError::unreadable);
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    return std::string_view(buffer.data(), size);
}

} // namespace orvanta
