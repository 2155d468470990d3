#include "platform/linux/desktop_motion_sources.h"

#include "platform/linux/desktop_settings.h"
#include "platform/linux/glib_events.h"
#include "platform/portable/durable_file.h"
#include "platform/portable/file_watch.h"
#include "platform/portable/kde_motion_setting.h"

#include <QStandardPaths>

#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr auto animationsKey = "enable-animations";

class GnomeMotionSource : public MotionSource {
public:
    GnomeMotionSource(DesktopSettings settings, Callback<> changed) : m_settings(std::move(settings)), m_changed(std::move(changed))
    {
        const auto tell = [](GSettings*, const char*, gpointer self) { static_cast<GnomeMotionSource*>(self)->m_changed(); };
        g_signal_connect(
            m_settings.get(), "changed::enable-animations", G_CALLBACK(static_cast<void (*)(GSettings*, const char*, gpointer)>(tell)), this);
        // Settings that nobody has read yet are not watched by every backend.
        std::ignore = reduceMotion();
    }
    GnomeMotionSource(const GnomeMotionSource&) = delete;
    GnomeMotionSource& operator=(const GnomeMotionSource&) = delete;
    ~GnomeMotionSource() override { g_signal_handlers_disconnect_by_data(m_settings.get(), this); }

    [[nodiscard]] bool reduceMotion() const override { return !g_settings_get_boolean(m_settings.get(), animationsKey); }

private:
    DesktopSettings m_settings;
    Callback<> m_changed;
    GlibEvents m_events;
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
    auto settings = openDesktopSettings("org.gnome.desktop.interface", animationsKey, G_VARIANT_TYPE_BOOLEAN);
    return settings ? std::make_unique<GnomeMotionSource>(std::move(settings), std::move(changed)) : nullptr;
}

std::unique_ptr<MotionSource> makeKdeMotionSource(Callback<> changed)
{
    return std::make_unique<KdeMotionSource>(std::move(changed));
}

} // namespace orvanta
