#pragma once

#include "platform/linux/desktop_focus_sources.h"

#include <QStringList>

namespace orvanta {

/// GSettings' org.gnome.desktop.notifications, key show-banners, which GNOME Shell's Do Not Disturb turns off. It counts
/// on the GNOME desktops (`desktops` are the names of the running one), and wherever GNOME Shell is on the bus: other
/// desktops have the setting installed without obeying it. Null when the schema or the key is not installed.
[[nodiscard]] std::unique_ptr<FocusSource> makeGnomeFocusSource(const QStringList& desktops);

} // namespace orvanta
