#include "platform/linux/desktop_colour_scheme.h"

#include <QGuiApplication>
#include <QPalette>
#include <QString>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr auto schemeKey = "color-scheme";

bool isKde()
{
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(u"KDE"_s, Qt::CaseInsensitive);
}

/// Grey, as the desktop's own windows are then. The program's views choose their colours by whether the window is dark.
QPalette darkPalette()
{
    return QPalette(QColor(0x36, 0x36, 0x36), QColor(0x24, 0x24, 0x24));
}

} // namespace

DesktopColourScheme::DesktopColourScheme()
{
    if (!isKde())
        m_settings = openDesktopSettings("org.gnome.desktop.interface", schemeKey, G_VARIANT_TYPE_STRING);
    if (!m_settings)
        return;
    const auto changed = [](GSettings*, const char*, gpointer self) { static_cast<DesktopColourScheme*>(self)->follow(); };
    g_signal_connect(m_settings.get(), "changed::color-scheme", G_CALLBACK(static_cast<void (*)(GSettings*, const char*, gpointer)>(changed)), this);
    follow();
}

DesktopColourScheme::~DesktopColourScheme()
{
    if (m_settings)
        g_signal_handlers_disconnect_by_data(m_settings.get(), this);
}

void DesktopColourScheme::follow()
{
    const std::unique_ptr<char, decltype([](char* text) { g_free(text); })> scheme(g_settings_get_string(m_settings.get(), schemeKey));
    // The palette without anything set is Qt's own.
    QGuiApplication::setPalette(QLatin1StringView(scheme.get()) == "prefer-dark"_L1 ? darkPalette() : QPalette());
}

} // namespace orvanta
