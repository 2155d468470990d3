#include "platform/linux/desktop_focus_sources.h"

#include "platform/linux/gnome_focus_source.h"
#include "platform/linux/session_bus_focus_source.h"

#include <QStringList>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

const auto notifications = u"org.freedesktop.Notifications"_s;
const auto notificationsPath = u"/org/freedesktop/Notifications"_s;

/// Plasma's notifications, and those of every other service that has taken the same property over.
FocusQuestion plasma()
{
    return { .service = notifications,
        .ask = propertyQuestion(notifications, notificationsPath, notifications, u"Inhibited"_s),
        .announcements = { propertyAnnouncement(notificationsPath, notifications) } };
}

FocusQuestion dunst()
{
    const auto control = u"org.dunstproject.cmd0"_s;
    return { .service = notifications,
        .ask = propertyQuestion(notifications, notificationsPath, control, u"paused"_s),
        .announcements = { propertyAnnouncement(notificationsPath, control) } };
}

/// The settings are kept by a service that other desktops may run as well, so that its presence proves nothing: the
/// notification service has to be XFCE's own.
FocusQuestion xfce(const QStringList& desktops)
{
    const auto settings = u"org.xfce.Xfconf"_s;
    const auto settingsPath = u"/org/xfce/Xfconf"_s;
    return { .service = settings,
        .alsoNeeded = desktops.contains("XFCE"_L1, Qt::CaseInsensitive) ? QString() : u"org.xfce.Notifyd"_s,
        .ask = methodQuestion(settings, settingsPath, settings, u"GetProperty"_s, { u"xfce4-notifyd"_s, u"/do-not-disturb"_s }),
        // A setting that was never touched is none, and neither is one that was reset.
        .refusalThatMeansOff = u"org.xfce.Xfconf.Error."_s,
        .announcements = { { .path = settingsPath, .interface = settings, .firstArgument = u"xfce4-notifyd"_s } } };
}

FocusQuestion swayNotificationCenter()
{
    const auto control = u"org.erikreider.swaync.cc"_s;
    const auto path = u"/org/erikreider/swaync/cc"_s;
    return { .service = control,
        .ask = methodQuestion(control, path, control, u"GetDnd"_s, {}),
        // Its signals have changed their names over the years; any of them is reason enough to ask.
        .announcements = { { .path = path, .interface = control }, propertyAnnouncement(path, control) } };
}

} // namespace

std::vector<std::unique_ptr<FocusSource>> makeFocusSources()
{
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    std::vector<std::unique_ptr<FocusSource>> sources;
    if (auto gnome = makeGnomeFocusSource(desktops))
        sources.push_back(std::move(gnome));
    for (FocusQuestion question : { plasma(), dunst(), xfce(desktops), swayNotificationCenter() })
        sources.push_back(std::make_unique<SessionBusFocusSource>(std::move(question)));
    return sources;
}

} // namespace orvanta
