#include "platform/linux/desktop_motion_sources.h"

#include "platform/portable/durable_file.h"
#include "platform/portable/file_watch.h"
#include "platform/portable/kde_motion_setting.h"

#include <QAbstractEventDispatcher>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>
#include <utility>

#include <gio/gio.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr auto animationsKey = "enable-animations";

class GnomeMotionSource : public MotionSource {
public:
    GnomeMotionSource(GSettingsSchema* schema, Callback<> changed)
        : m_settings(g_settings_new_full(schema, nullptr, nullptr))
        , m_changed(std::move(changed))
    {
        const auto tell = [](GSettings*, const char*, gpointer self) { static_cast<GnomeMotionSource*>(self)->m_changed(); };
        g_signal_connect(m_settings, "changed::enable-animations", G_CALLBACK(static_cast<void (*)(GSettings*, const char*, gpointer)>(tell)), this);
        // Settings that nobody has read yet are not watched by every backend.
        std::ignore = reduceMotion();

        const QAbstractEventDispatcher* events = QAbstractEventDispatcher::instance();
        if (events && events->inherits("QEventDispatcherGlib"))
            return;
        QObject::connect(&m_pump, &QTimer::timeout, &m_pump, [] {
            while (g_main_context_iteration(nullptr, FALSE)) { }
        });
        m_pump.start(std::chrono::seconds(1));
    }
    GnomeMotionSource(const GnomeMotionSource&) = delete;
    GnomeMotionSource& operator=(const GnomeMotionSource&) = delete;
    ~GnomeMotionSource() override
    {
        g_signal_handlers_disconnect_by_data(m_settings, this);
        g_object_unref(m_settings);
    }

    [[nodiscard]] bool reduceMotion() const override { return !g_settings_get_boolean(m_settings, animationsKey); }

private:
    GSettings* m_settings;
    Callback<> m_changed;
    QTimer m_pump;
};

class KdeMotionSource : public MotionSource {
public:
    explicit KdeMotionSource(Callback<> changed)
        : m_watch(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/kdeglobals"_s, std::move(changed))
    {
    }

    [[nodiscard]] bool reduceMotion() const override
    {
        // A settings file of a few kilobytes; anything larger is none.
        constexpr qsizetype limit = 1024LL * 1024;
        // From the user's file to the most general one; the first that has the entry decides.
        for (const QString& file : QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, u"kdeglobals"_s)) {
            const auto content = readWholeFile(file, limit).value_or(std::nullopt);
            const auto factor = content ? animationDurationFactor(*content) : std::nullopt;
            if (factor)
                return *factor == 0;
        }
        return false;
    }

private:
    FileWatch m_watch;
};

} // namespace

std::unique_ptr<MotionSource> makeGnomeMotionSource(Callback<> changed)
{
    // Opening a schema or reading a key that is not installed would end the process.
    GSettingsSchemaSource* installed = g_settings_schema_source_get_default();
    GSettingsSchema* schema = installed ? g_settings_schema_source_lookup(installed, "org.gnome.desktop.interface", TRUE) : nullptr;
    if (!schema)
        return nullptr;
    std::unique_ptr<MotionSource> source;
    if (g_settings_schema_has_key(schema, animationsKey)) {
        GSettingsSchemaKey* key = g_settings_schema_get_key(schema, animationsKey);
        if (g_variant_type_equal(g_settings_schema_key_get_value_type(key), G_VARIANT_TYPE_BOOLEAN))
            source = std::make_unique<GnomeMotionSource>(schema, std::move(changed));
        g_settings_schema_key_unref(key);
    }
    g_settings_schema_unref(schema);
    return source;
}

std::unique_ptr<MotionSource> makeKdeMotionSource(Callback<> changed)
{
    return std::make_unique<KdeMotionSource>(std::move(changed));
}

} // namespace orvanta
