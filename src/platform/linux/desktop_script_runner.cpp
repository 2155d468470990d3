#include "platform/linux/desktop_script_runner.h"

namespace orvanta {

using namespace Qt::StringLiterals;

std::optional<QString> DesktopScriptRunner::run(const Script& script)
{
    switch (script.id) {
    case ScriptId::frontProcess: {
        const auto front = m_applications.frontmost();
        return front ? front->localizedName : std::nullopt;
    }
    case ScriptId::chromeTab:
        return tab(u"chrom"_s); // Chromium, too
    case ScriptId::braveTab:
        return tab(u"brave"_s);
    case ScriptId::firefoxTab:
        return tab(u"firefox"_s);
    case ScriptId::safariTab:
    case ScriptId::arcTab:
        break;
    }
    return std::nullopt;
}

std::optional<QString> DesktopScriptRunner::tab(const QString& applicationName)
{
    const auto document = m_documents.active(applicationName);
    return document ? std::optional(document->url + u'\n' + document->title) : std::nullopt;
}

} // namespace orvanta
