#include "platform/linux/status_hints.h"

#include <QCoreApplication>

namespace orvanta {

QString desktopStatusHint(const QString& status)
{
    if (status == QLatin1StringView("Install Orvanta Focus in Applications first"))
        return QCoreApplication::translate("StatusHints",
            "This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.");
    if (status == QLatin1StringView("Approve website protection in System Settings"))
        return QCoreApplication::translate(
            "StatusHints", "Your desktop asks for an administrator's password. If it does not, no authentication agent runs in this session.");
    return {};
}

} // namespace orvanta
