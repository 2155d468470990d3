#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

/// The identifier of the browser that the desktop entry `desktopId` ("firefox-esr.desktop") starts; absent if it starts
/// none of the known browsers. This table is the one place where builds of browsers are named.
[[nodiscard]] std::optional<QString> browserOfDesktopEntry(const QString& desktopId);

/// The desktop entries, with their suffix, that may start the browser with this identifier, the usual ones first. Empty if
/// it is none of the known browsers, or is not built for Linux.
[[nodiscard]] QStringList desktopEntriesOfBrowser(const QString& identifier);

/// The identifier of the browser whose windows bear the class `windowClass`; for copies that were unpacked somewhere and
/// have no desktop entry. Absent if it is none of the known browsers.
[[nodiscard]] std::optional<QString> browserOfWindowClass(const QString& windowClass);

} // namespace orvanta
