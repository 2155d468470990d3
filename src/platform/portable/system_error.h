#pragma once

#include "platform/platform_error.h"

#include <QString>

#include <cerrno>
#include <cstring>
#include <expected>

namespace orvanta {

/// The system's own words for `error`.
[[nodiscard]] inline QString systemError(int error = errno)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

[[nodiscard]] inline std::unexpected<PlatformError> failure(const QString& description)
{
    return std::unexpected(PlatformError { description });
}

} // namespace orvanta
