#include "harness/lifecycle/ai_harness.h"

namespace orvanta {

std::string_view rawValue(AIHarness harness)
{
    return harness == AIHarness::codex ? "codex" : "claude";
}

QString harnessName(AIHarness harness)
{
    const std::string_view text = rawValue(harness);
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

std::optional<AIHarness> harnessFromRawValue(std::string_view text)
{
    for (const AIHarness harness : allHarnesses) {
        if (rawValue(harness) == text)
            return harness;
    }
    return std::nullopt;
}

} // namespace orvanta
