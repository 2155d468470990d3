#pragma once

#include <QString>

#include <expected>

namespace orvanta {

/// Why an operation of the system failed, in words that can be shown to the user as they are.
struct PlatformError {
    QString description;

    bool operator==(const PlatformError&) const = default;
};

template <typename T>
using Result = std::expected<T, PlatformError>;

} // namespace orvanta
