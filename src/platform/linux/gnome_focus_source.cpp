#include "platform/linux/gnome_focus_source.h"

#include "platform/linux/desktop_settings.h"
#include "platform/linux/glib_events.h"
#include "platform/linux/session_bus_name.h"

#include <algorithm>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr auto bannersKey = "show-banners";

bool isGnome(const QStringList& desktops)
{
    return std::ranges::any_of(std::initializer_list { "GNOME"_L1, "GNOME-Classic"_L1, "GNOME-Flashback"_L1 },
        [&](QLatin1StringView name) { return desktops.contains(name, Qt::CaseInsensitive); });
}

class GnomeFocusSource : public FocusSource {
public:
    GnomeFocusSource(DesktopSettings settings, const QStringList& desktops)
        : m_settings(std::move(settings))
        , m_isGnome(isGnome(desktops))
        , m_shell(u"org.gnome.Shell"_s, [] { })
    {
        const auto changed = [](GSettings*, const char*, gpointer self) { static_cast<GnomeFocusSource*>(self)->read(); };
        g_signal_connect(
            m_settings.get(), "changed::show-banners", G_CALLBACK(static_cast<void (*)(GSettings*, const char*, gpointer)>(changed)), this);
        // Settings that nobody has read yet are not watched by every backend.
        read();
    }
    GnomeFocusSource(const GnomeFocusSource&) = delete;
    GnomeFocusSource& operator=(const GnomeFocusSource&) = delete;
    ~GnomeFocusSource() override { g_signal_handlers_disconnect_by_data(m_settings.get(), this); }

    [[nodiscard]] std::optional<bool> isFocused() const override
    {
        return m_isGnome || m_shell.hasOwner() ? std::optional(!m_showsBanners) : std::nullopt;
    }

private:
    void read() { m_showsBanners = g_settings_get_boolean(m_settings.get(), bannersKey); }

    DesktopSettings m_settings;
    GlibEvents m_events;
    bool m_isGnome;
    SessionBusName m_shell;
    bool m_showsBanners = true;
};

} // namespace

std::unique_ptr<FocusSource> makeGnomeFocusSource(const QStringList& desktops)
{
    auto settings = openDesktopSettings("org.gnome.desktop.notifications", bannersKey, G_VARIANT_TYPE_BOOLEAN);
    return settings ? std::make_unique<GnomeFocusSource>(std::move(settings), desktops) : nullptr;
}

} // namespace orvanta
