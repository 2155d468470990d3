#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanta {

/// The AI coding agents that are supported.
enum class AIHarness : std::uint8_t { codex, claude };

inline constexpr std::array allHarnesses { AIHarness::codex, AIHarness::claude };

/// The word by which an agent is known to its hook, to the receiver and in event identifiers: "codex" or "claude".
[[nodiscard]] std::string_view rawValue(AIHarness harness);
[[nodiscard]] QString harnessName(AIHarness harness);

/// The reverse, letter for letter.
[[nodiscard]] std::optional<AIHarness> harnessFromRawValue(std::string_view text);

} // namespace orvanta
