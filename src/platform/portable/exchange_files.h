#pragma once

#include <cstdint>

namespace orvanta {

enum class Exchange : std::uint8_t { done, failed, unsupported };

/// Gives each of two files the other's name, in one step. errno says why it failed.
[[nodiscard]] Exchange exchangeFiles(const char* left, const char* right);

} // namespace orvanta
