#include "platform/linux/installed_desktop_entry.h"

#include <QFile>

#include <algorithm>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

bool isExecutable(const std::string& path)
{
    return ::access(path.c_str(), X_OK) == 0;
}

} // namespace

DesktopSession DesktopSession::current()
{
    DesktopSession session { .languages = desktopEntryLanguages(),
        .desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts),
        .binFolders = {} };
    for (const QByteArray& folder : qgetenv("PATH").split(':')) {
        if (folder.startsWith('/'))
            session.binFolders.push_back(folder.toStdString());
    }
    return session;
}

bool isInstalled(const DesktopEntry& entry, const DesktopSession& session)
{
    if (entry.hidden || entry.type != "Application"_L1)
        return false;
    if (!entry.tryExec || entry.tryExec->isEmpty())
        return true;
    const std::string program = QFile::encodeName(*entry.tryExec).toStdString();
    if (program.find('/') != std::string::npos)
        return program.starts_with('/') && isExecutable(program);
    return std::ranges::any_of(
        session.binFolders, [&](const std::string& folder) { return isExecutable(std::string(folder).append("/").append(program)); });
}

bool isListed(const DesktopEntry& entry, const DesktopSession& session)
{
    return !entry.noDisplay && isShownIn(entry, session.desktops);
}

} // namespace orvanta
