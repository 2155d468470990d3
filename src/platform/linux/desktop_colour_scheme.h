#pragma once

#include "platform/linux/desktop_settings.h"
#include "platform/linux/glib_events.h"

namespace orvanta {

/// Gives the application a dark palette while the desktop prefers dark: GSettings' org.gnome.desktop.interface, key
/// color-scheme, which Qt 6.4 does not read. Where the desktop has no such key, or no preference, and on KDE, whose colours Qt
/// reads itself, the palette is Qt's own. Owned by the platform; main thread only.
class DesktopColourScheme {
public:
    DesktopColourScheme();
    ~DesktopColourScheme();

    DesktopColourScheme(const DesktopColourScheme&) = delete;
    DesktopColourScheme& operator=(const DesktopColourScheme&) = delete;

private:
    void follow();

    DesktopSettings m_settings; ///< absent where nothing is to be followed
    GlibEvents m_events;
};

} // namespace orvanta
