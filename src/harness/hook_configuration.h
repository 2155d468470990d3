#pragma once

#include "harness/json_document.h"
#include "harness/lifecycle/ai_harness.h"

#include <QString>

#include <array>
#include <expected>
#include <string_view>

namespace orvanta {

// What an agent's configuration says about hooks, as rules over its JSON: under "hooks", for each event, an array of groups;
// in each group, under "hooks", an array of entries with a "command".

/// The events that are registered with every agent, in this order.
inline constexpr std::array<std::string_view, 3> registeredEvents { "SessionStart", "UserPromptSubmit", "Stop" };

/// Whether `root` has an entry with exactly `command` for each event.
[[nodiscard]] bool hasRegistrations(const JsonNode& root, const QString& command);

/// Whether `root` has any entry that runs the hook script, wherever that is.
[[nodiscard]] bool mentionsHookScript(const JsonNode& root);

/// Registers `command` for each event, in a group of its own, and takes away every entry for the hook script that was there
/// before. Whatever else stands in the same group stays. An error, in words that follow "it", and no change where the
/// hooks have another form than agents give them: to write over that would destroy what somebody put there.
[[nodiscard]] std::expected<void, QString> addRegistrations(JsonNode& root, AIHarness harness, const QString& command);

/// Takes away every entry for the hook script, of any event, and what is empty then only because of that.
void removeRegistrations(JsonNode& root);

} // namespace orvanta
