#pragma once

#include "harness/lifecycle/ai_harness.h"

#include <QByteArray>
#include <QString>

namespace orvanta {

/// The script that an agent runs at each event: it posts its standard input to the receiver, waits a quarter of a second
/// at most, says nothing and always succeeds. An agent is never held up by us.
[[nodiscard]] QByteArray hookScript();

inline constexpr std::uint16_t hookScriptMode = 0755;
inline constexpr std::string_view hookScriptName = "orvanta-session-hook.sh";

/// The command by which `harness` runs the script at the absolute path `scriptPath`, which may hold anything at all.
[[nodiscard]] QString hookCommand(const QString& scriptPath, AIHarness harness);

} // namespace orvanta
