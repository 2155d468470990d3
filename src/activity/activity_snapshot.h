#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace orvanta {

using WallTime = std::chrono::system_clock::time_point;

/// An application, as a sample saw it.
struct AppInfo {
    std::optional<QString> bundleIdentifier;
    QString name; ///< the localized name, or the process's
    bool isActive = false;

    bool operator==(const AppInfo&) const = default;
};

/// The current tab of a browser.
struct BrowserTab {
    QString browser; ///< its short name: "Safari", "Chrome", "Brave", "Firefox" or "Arc"
    QString title;
    QString url; ///< as the browser reports it

    bool operator==(const BrowserTab&) const = default;
};

/// What the user does at one moment. Never uploaded as it is.
struct ActivitySnapshot {
    WallTime timestamp;
    double idleSeconds = 0; ///< since the last user input; 0 while an AI agent is working
    std::optional<AppInfo> frontmostApp;
    std::vector<AppInfo> runningApps;
    std::optional<BrowserTab> activeBrowserTab;

    bool operator==(const ActivitySnapshot&) const = default;
};

} // namespace orvanta
