#include "platform/linux/desktop_settings.h"

namespace orvanta {

DesktopSettings openDesktopSettings(const char* schema, const char* key, const GVariantType* type)
{
    GSettingsSchemaSource* installed = g_settings_schema_source_get_default();
    GSettingsSchema* found = installed ? g_settings_schema_source_lookup(installed, schema, TRUE) : nullptr;
    if (!found)
        return nullptr;
    DesktopSettings settings;
    if (g_settings_schema_has_key(found, key)) {
        GSettingsSchemaKey* known = g_settings_schema_get_key(found, key);
        if (g_variant_type_equal(g_settings_schema_key_get_value_type(known), type))
            settings.reset(g_settings_new_full(found, nullptr, nullptr));
        g_settings_schema_key_unref(known);
    }
    g_settings_schema_unref(found);
    return settings;
}

} // namespace orvanta
