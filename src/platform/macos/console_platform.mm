#include "platform/console_platform.h"

#include "platform/macos/keychain_secret_store.h"
#include "platform/portable/posix_file_system.h"

namespace orvanta {

ConsolePlatform makeConsolePlatform()
{
    return { .secrets = std::make_unique<KeychainSecretStore>(), .files = std::make_unique<PosixFileSystem>() };
}

} // namespace orvanta
