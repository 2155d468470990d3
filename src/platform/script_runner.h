#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// The questions that are put to the window system and to browsers. On macOS the source is executed; elsewhere the
/// question is answered by its id.
enum class ScriptId {
    frontProcess, ///< the name of the application in front
    safariTab,    ///< the address of the front window's tab, a line feed, and its title; the same for the others
    chromeTab,
    braveTab,
    firefoxTab,
    arcTab,
};

struct Script {
    ScriptId id;
    QString source; ///< AppleScript

    bool operator==(const Script&) const = default;
};

/// Runs scripts and waits for them. Each thread that needs it has an instance of its own.
class ScriptRunner {
public:
    virtual ~ScriptRunner() = default;

    /// What the script says; absent if it could not be run, failed, or said nothing that is a text. On Linux whoever does not
    /// answer is waited for once, for a second at most, and not asked again until it has answered.
    [[nodiscard]] virtual std::optional<QString> run(const Script& script) = 0;
};

} // namespace orvanta
