#pragma once

#include "harness/command_line.h"
#include "platform/file_system.h"
#include "platform/secret_store.h"
#include "service/service_configuration.h"

#include <QString>

namespace orvanta {

/// `orvanta-harness run`: receives, decodes and uploads until SIGTERM or SIGINT. Needs the application object. Prints
/// "Listening on 127.0.0.1:47653" once it does.
[[nodiscard]] HarnessExit runHarness(const ServiceConfiguration& service, SecretStore& secrets, FileSystem& files, const QString& runtimeFolder);

} // namespace orvanta
