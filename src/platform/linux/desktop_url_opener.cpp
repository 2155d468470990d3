#include "platform/linux/desktop_url_opener.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// The command that shows the desktop's network settings; empty where none is known or installed.
QStringList networkSettings()
{
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    const bool isKde = desktops.contains("KDE"_L1);
    const QStringList command = isKde   ? QStringList { u"systemsettings"_s, u"kcm_networkmanagement"_s }
        : desktops.contains("GNOME"_L1) ? QStringList { u"gnome-control-center"_s, u"network"_s }
                                        : QStringList { u"nm-connection-editor"_s };
    return QStandardPaths::findExecutable(command.front()).isEmpty() ? QStringList() : command;
}

} // namespace

void DesktopUrlOpener::open(const QUrl& url)
{
    if (url.scheme() != "x-apple.systempreferences"_L1) {
        QDesktopServices::openUrl(url);
        return;
    }
    if (const QStringList command = networkSettings(); !command.isEmpty())
        QProcess::startDetached(command.front(), command.mid(1));
}

} // namespace orvanta
