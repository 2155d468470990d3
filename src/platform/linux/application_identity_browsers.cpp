#include "platform/linux/application_identity_browsers.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

struct Browser {
    QString identifier;
    QStringList desktopIds;    ///< without their suffix: distributions' packages, flatpaks, snaps
    QStringList windowClasses; ///< in lower case
};

const QList<Browser>& browsers()
{
    static const QList<Browser> table {
        { u"org.mozilla.firefox"_s,
            { u"firefox"_s, u"firefox-esr"_s, u"firefox-beta"_s, u"firefox-devedition"_s, u"firefox-developer-edition"_s, u"firefox-nightly"_s,
                u"org.mozilla.firefox"_s, u"firefox_firefox"_s },
            { u"firefox"_s, u"firefox-esr"_s, u"firefox-beta"_s, u"firefox-aurora"_s, u"firefox developer edition"_s, u"firefox-nightly"_s } },
        { u"com.google.Chrome"_s,
            { u"google-chrome"_s, u"google-chrome-beta"_s, u"google-chrome-unstable"_s, u"google-chrome-canary"_s, u"com.google.Chrome"_s,
                u"com.google.ChromeDev"_s, u"chromium"_s, u"chromium-browser"_s, u"org.chromium.Chromium"_s, u"chromium_chromium"_s },
            { u"google-chrome"_s, u"google-chrome-beta"_s, u"google-chrome-unstable"_s, u"google-chrome-canary"_s, u"chromium"_s,
                u"chromium-browser"_s } },
        { u"com.brave.Browser"_s,
            { u"brave"_s, u"brave-browser"_s, u"brave-browser-beta"_s, u"brave-browser-nightly"_s, u"com.brave.Browser"_s, u"brave_brave"_s },
            { u"brave-browser"_s, u"brave-browser-beta"_s, u"brave-browser-nightly"_s } },
        { u"com.microsoft.edgemac"_s,
            { u"microsoft-edge"_s, u"microsoft-edge-beta"_s, u"microsoft-edge-dev"_s, u"com.microsoft.Edge"_s, u"com.microsoft.EdgeDev"_s },
            { u"microsoft-edge"_s, u"microsoft-edge-beta"_s, u"microsoft-edge-dev"_s } },
        { u"app.zen-browser.zen"_s, { u"zen"_s, u"zen-browser"_s, u"zen-twilight"_s, u"app.zen_browser.zen"_s },
            { u"zen"_s, u"zen-browser"_s, u"zen-alpha"_s, u"zen-beta"_s, u"zen-twilight"_s } },
        // Safari and Arc are not built for Linux.
        { u"com.apple.Safari"_s, {}, {} },
        { u"company.thebrowser.Browser"_s, {}, {} },
    };
    return table;
}

QHash<QString, QString> indexed(QStringList Browser::* names, const QString& suffix)
{
    QHash<QString, QString> result;
    for (const Browser& browser : browsers()) {
        for (const QString& name : browser.*names)
            result.insert(name + suffix, browser.identifier);
    }
    return result;
}

std::optional<QString> found(const QHash<QString, QString>& table, const QString& key)
{
    const auto entry = table.constFind(key);
    return entry == table.cend() ? std::nullopt : std::optional(*entry);
}

} // namespace

std::optional<QString> browserOfDesktopEntry(const QString& desktopId)
{
    static const QHash<QString, QString> table = indexed(&Browser::desktopIds, u".desktop"_s);
    return found(table, desktopId);
}

QStringList desktopEntriesOfBrowser(const QString& identifier)
{
    QStringList entries;
    for (const Browser& browser : browsers()) {
        if (browser.identifier != identifier)
            continue;
        for (const QString& desktopId : browser.desktopIds)
            entries << desktopId + ".desktop"_L1;
    }
    return entries;
}

std::optional<QString> browserOfWindowClass(const QString& windowClass)
{
    static const QHash<QString, QString> table = indexed(&Browser::windowClasses, QString());
    return found(table, windowClass.toLower());
}

} // namespace orvanta
