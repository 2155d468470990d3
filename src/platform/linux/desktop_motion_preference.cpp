#include "platform/linux/desktop_motion_preference.h"

#include "platform/linux/desktop_motion_sources.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

bool isOneOf(const QStringList& desktops, std::initializer_list<QLatin1StringView> names)
{
    return std::ranges::any_of(names, [&](QLatin1StringView name) { return desktops.contains(name, Qt::CaseInsensitive); });
}

} // namespace

DesktopMotionPreference::DesktopMotionPreference()
{
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    const bool isKde = isOneOf(desktops, { "KDE"_L1 });
    const bool isGnome
        = !isKde && isOneOf(desktops, { "GNOME"_L1, "GNOME-Classic"_L1, "GNOME-Flashback"_L1, "Unity"_L1, "Budgie"_L1, "Pantheon"_L1 });
    const auto add = [this](auto make) {
        if (auto source = make([this] { update(); }))
            m_sources.push_back(std::move(source));
    };
    if (!isKde)
        add(makeGnomeMotionSource);
    if (!isGnome)
        add(makeKdeMotionSource);
    update();
}

DesktopMotionPreference::~DesktopMotionPreference() = default;

Subscription DesktopMotionPreference::observe(Callback<bool> changed)
{
    return m_observers.add(std::move(changed));
}

void DesktopMotionPreference::update()
{
    const bool reduceMotion = std::ranges::any_of(m_sources, [](const auto& source) { return source->reduceMotion(); });
    if (std::exchange(m_reduceMotion, reduceMotion) != reduceMotion)
        m_observers.notify(reduceMotion);
}

} // namespace orvanta
