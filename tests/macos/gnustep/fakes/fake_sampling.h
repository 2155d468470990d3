#pragma once

#include <QString>

#include <optional>

namespace orvanta::testing::mac {

// What samples of the user's activity are taken from: events, and scripts. Processes are listed for real.

/// Seconds since the last event of a kind, by the system's raw value. Asking is recorded with the source's state and the kind.
void setSecondsSinceEvent(unsigned int type, double seconds);
void passSeconds(double seconds);

enum class ScriptEnd { text, noText, error, notMade };

/// What every script ends with from now on. Running is recorded with the source.
void endScripts(ScriptEnd end, const QString& text = {});

} // namespace orvanta::testing::mac
