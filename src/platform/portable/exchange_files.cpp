#include "platform/portable/exchange_files.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>

namespace orvanta {

Exchange exchangeFiles(const char* left, const char* right)
{
#if defined(RENAME_EXCHANGE)
    const int result = ::renameat2(AT_FDCWD, left, AT_FDCWD, right, RENAME_EXCHANGE);
#elif defined(RENAME_SWAP)
    const int result = ::renamex_np(left, right, RENAME_SWAP);
#else
    const int result = -1;
    errno = ENOSYS;
#endif
    if (result == 0)
        return Exchange::done;
    // Not every file system can.
    return errno == EINVAL || errno == ENOSYS || errno == ENOTSUP ? Exchange::unsupported : Exchange::failed;
}

} // namespace orvanta
