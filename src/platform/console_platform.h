#pragma once

#include "platform/file_system.h"
#include "platform/secret_store.h"

#include <memory>

namespace orvanta {

/// What a program without windows asks of the system. Made once, by its main.
struct ConsolePlatform {
    std::unique_ptr<SecretStore> secrets;
    std::unique_ptr<FileSystem> files;
};

[[nodiscard]] ConsolePlatform makeConsolePlatform();

} // namespace orvanta
