#pragma once

#include <memory>

#include <gio/gio.h>

namespace orvanta {

struct SettingsRelease {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
};

using DesktopSettings = std::unique_ptr<GSettings, SettingsRelease>;

/// The desktop's settings under `schema`; absent where the schema, or its key of that type, is not installed: opening the one
/// or reading the other would end the process.
[[nodiscard]] DesktopSettings openDesktopSettings(const char* schema, const char* key, const GVariantType* type);

} // namespace orvanta
