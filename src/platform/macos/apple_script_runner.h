#pragma once

#include "platform/script_runner.h"

namespace orvanta {

/// Executes the source. Scripts of one instance run on the thread that made it, and a script takes as long as whom it asks.
class AppleScriptRunner : public ScriptRunner {
public:
    [[nodiscard]] std::optional<QString> run(const Script& script) override;
};

} // namespace orvanta
