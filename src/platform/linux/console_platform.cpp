#include "platform/console_platform.h"

#include "platform/linux/secret_service.h"
#include "platform/portable/posix_file_system.h"

namespace orvanta {

ConsolePlatform makeConsolePlatform()
{
    return { .secrets = std::make_unique<SecretService>(), .files = std::make_unique<PosixFileSystem>() };
}

} // namespace orvanta
