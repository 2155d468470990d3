#pragma once

#include <QStringList>

namespace orvanta {

/// What the launch arguments ask for. Each is matched as a whole argument, exact and case-sensitive, anywhere in the
/// list; everything else in the list is left alone.
struct LaunchOptions {
    bool focusActive = false;                 ///< "--focus-active": focus starts active
    bool isBlockedPreview = false;            ///< either preview: the window shows the blocking screen
    bool isBlockedApplicationPreview = false; ///< "--blocked-application-preview": with its button, which closes the window
    bool isUiTest = false;                    ///< "--ui-test": no cloud, and the local lists are erased at start

    [[nodiscard]] static LaunchOptions read(const QStringList& arguments);

    bool operator==(const LaunchOptions&) const = default;
};

} // namespace orvanta
