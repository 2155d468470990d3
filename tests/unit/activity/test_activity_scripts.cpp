#include "activity/activity_scripts.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// Lines, each indented by `indentation` levels of four blanks.
struct Line {
    int indentation;
    const char* text;
};

QString script(std::initializer_list<Line> lines)
{
    QStringList texts;
    for (const Line& line : lines)
        texts << QString(4 * line.indentation, u' ') + QString::fromLatin1(line.text);
    return texts.join(u'\n');
}

QByteArray chromeRelative(const QByteArray& application)
{
    return script({ { 0, ("tell application \"" + application + '"').constData() }, { 1, "if (count of windows) > 0 then" },
                      { 2, "set activeTab to active tab of front window" }, { 2, "return (URL of activeTab) & \"\\n\" & (title of activeTab)" },
                      { 1, "end if" }, { 0, "end tell" } })
        .toUtf8();
}

} // namespace

/// Byte by byte: on macOS the scripts are executed as they are.
class TestActivityScripts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFrontProcessScript()
    {
        QCOMPARE(frontProcessScript().id, ScriptId::frontProcess);
        QCOMPARE(frontProcessScript().source.toUtf8(),
            script({ { 0, "tell application \"System Events\"" }, { 1, "set frontApp to first application process whose frontmost is true" },
                       { 1, "return name of frontApp" }, { 0, "end tell" } })
                .toUtf8());
    }

    void theBrowsersInTheirOrder()
    {
        QStringList names;
        QStringList identifiers;
        std::vector<ScriptId> ids;
        for (const KnownBrowser& browser : knownBrowsers()) {
            names << browser.shortName;
            identifiers << browser.bundleIdentifier;
            ids.push_back(browser.tabScript.id);
        }
        QCOMPARE(names, (QStringList { u"Safari"_s, u"Chrome"_s, u"Brave"_s, u"Firefox"_s, u"Arc"_s }));
        QCOMPARE(identifiers,
            (QStringList {
                u"com.apple.Safari"_s, u"com.google.Chrome"_s, u"com.brave.Browser"_s, u"org.mozilla.firefox"_s, u"company.thebrowser.Browser"_s }));
        QVERIFY((ids == std::vector { ScriptId::safariTab, ScriptId::chromeTab, ScriptId::braveTab, ScriptId::firefoxTab, ScriptId::arcTab }));
    }

    void theTabScripts()
    {
        const auto source = [](std::size_t place) { return knownBrowsers().at(place).tabScript.source.toUtf8(); };
        QCOMPARE(source(0),
            script({ { 0, "tell application \"Safari\"" }, { 1, "if (count of windows) > 0 then" },
                       { 2, "set currentTab to current tab of front window" }, { 2, "return (URL of currentTab) & \"\\n\" & (name of currentTab)" },
                       { 1, "end if" }, { 0, "end tell" } })
                .toUtf8());
        QCOMPARE(source(1), chromeRelative("Google Chrome"));
        QCOMPARE(source(2), chromeRelative("Brave Browser"));
        QCOMPARE(source(3),
            script({ { 0, "tell application \"Firefox\"" }, { 1, "if (count of windows) > 0 then" },
                       { 2, "return (URL of front window) & \"\\n\" & (name of front window)" }, { 1, "end if" }, { 0, "end tell" } })
                .toUtf8());
        QCOMPARE(source(4),
            script({ { 0, "tell application \"Arc\"" }, { 1, "tell front window" },
                       { 2, "return (URL of active tab) & \"\\n\" & (title of active tab)" }, { 1, "end tell" }, { 0, "end tell" } })
                .toUtf8());
    }

    void eachScriptHasItsLength()
    {
        // Counted apart from the texts above, so that a slip of the same kind in both is noticed.
        QCOMPARE(frontProcessScript().source.size(), 139);
        std::vector<qsizetype> sizes;
        for (const KnownBrowser& browser : knownBrowsers())
            sizes.push_back(browser.tabScript.source.size());
        QVERIFY2((sizes == std::vector<qsizetype> { 199, 203, 203, 150, 132 }),
            qPrintable(QStringLiteral("%1 %2 %3 %4 %5").arg(sizes[0]).arg(sizes[1]).arg(sizes[2]).arg(sizes[3]).arg(sizes[4])));
    }
};

QTEST_GUILESS_MAIN(TestActivityScripts)
#include "test_activity_scripts.moc"
