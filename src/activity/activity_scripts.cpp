#include "activity/activity_scripts.h"

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// Chrome and its relatives, which answer to the same words.
QString chromeScript(const QString& application)
{
    return u"tell application \""_s + application
        + u"\"\n"
          "    if (count of windows) > 0 then\n"
          "        set activeTab to active tab of front window\n"
          "        return (URL of activeTab) & \"\\n\" & (title of activeTab)\n"
          "    end if\n"
          "end tell"_s;
}

const QString safariScript = u"tell application \"Safari\"\n"
                             "    if (count of windows) > 0 then\n"
                             "        set currentTab to current tab of front window\n"
                             "        return (URL of currentTab) & \"\\n\" & (name of currentTab)\n"
                             "    end if\n"
                             "end tell"_s;

/// Of the window: the browser does not tell its tabs.
const QString firefoxScript = u"tell application \"Firefox\"\n"
                              "    if (count of windows) > 0 then\n"
                              "        return (URL of front window) & \"\\n\" & (name of front window)\n"
                              "    end if\n"
                              "end tell"_s;

const QString arcScript = u"tell application \"Arc\"\n"
                          "    tell front window\n"
                          "        return (URL of active tab) & \"\\n\" & (title of active tab)\n"
                          "    end tell\n"
                          "end tell"_s;

} // namespace

const Script& frontProcessScript()
{
    static const Script script { ScriptId::frontProcess,
        u"tell application \"System Events\"\n"
        "    set frontApp to first application process whose frontmost is true\n"
        "    return name of frontApp\n"
        "end tell"_s };
    return script;
}

const std::array<KnownBrowser, 5>& knownBrowsers()
{
    static const std::array<KnownBrowser, 5> table {
        KnownBrowser { u"com.apple.Safari"_s, u"Safari"_s, { ScriptId::safariTab, safariScript } },
        KnownBrowser { u"com.google.Chrome"_s, u"Chrome"_s, { ScriptId::chromeTab, chromeScript(u"Google Chrome"_s) } },
        KnownBrowser { u"com.brave.Browser"_s, u"Brave"_s, { ScriptId::braveTab, chromeScript(u"Brave Browser"_s) } },
        KnownBrowser { u"org.mozilla.firefox"_s, u"Firefox"_s, { ScriptId::firefoxTab, firefoxScript } },
        KnownBrowser { u"company.thebrowser.Browser"_s, u"Arc"_s, { ScriptId::arcTab, arcScript } },
    };
    return table;
}

} // namespace orvanta
