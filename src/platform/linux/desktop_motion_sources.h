#pragma once

#include "platform/callback.h"

#include <memory>

namespace orvanta {

/// One place where a desktop keeps its wish for less motion. Owned by the DesktopMotionPreference; main thread only.
class MotionSource {
public:
    virtual ~MotionSource() = default;

    [[nodiscard]] virtual bool reduceMotion() const = 0;
};

/// GSettings' org.gnome.desktop.interface, key enable-animations; absent when the schema or the key is not installed.
/// `changed` is called from the event loop after a change. GSettings tells of changes through GLib's main context,
/// which Qt's event loop normally is; where it is not (QT_NO_GLIB=1), a timer runs that context once a second.
[[nodiscard]] std::unique_ptr<MotionSource> makeGnomeMotionSource(Callback<> changed);

/// KDE's kdeglobals, group KDE, entry AnimationDurationFactor: the user's file, else the system's. `changed` is called
/// from the event loop after anything happened to the user's file.
[[nodiscard]] std::unique_ptr<MotionSource> makeKdeMotionSource(Callback<> changed);

} // namespace orvanta
