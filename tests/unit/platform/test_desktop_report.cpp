#include "platform/linux/desktop_report.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

/// What the user is told of each kind of desktop.
class TestDesktopReport : public QObject {
    Q_OBJECT

    static DesktopFindings wayland(WindowSource windows, CoverManner cover = CoverManner::layerSurface)
    {
        return { .session = { .isWayland = true, .hasLayers = true, .hasQtForWayland = true, .hasXServer = true, .xServerProblem = {} },
            .cover = cover,
            .windows = windows,
            .idle = IdleProtocol::extIdleNotify };
    }

private Q_SLOTS:
    void onX11NothingIsMissing()
    {
        const DesktopFindings found { .session = { .hasXServer = true, .xServerProblem = {} }, .cover = CoverManner::x11Window };
        QCOMPARE(whatIsMissing(found), QStringList());
        QCOMPARE(sourcesInUse(found),
            QStringList({ u"Windows are shown by: an X server"_s, u"Applications are seen and hidden by: the X window manager"_s,
                u"The cover is: a window of the X server"_s, u"The time without input is known by: the X server"_s }));
    }

    void eachSourceIsNamed_data()
    {
        QTest::addColumn<WindowSource>("source");
        QTest::addColumn<QString>("name");
        QTest::newRow("gnome") << WindowSource::gnomeExtension << u"the extension of GNOME Shell"_s;
        QTest::newRow("kwin") << WindowSource::kwinScript << u"a script inside KWin"_s;
        QTest::newRow("sway") << WindowSource::swayCommands << u"sway's commands"_s;
        QTest::newRow("toplevel") << WindowSource::foreignToplevel << u"wlr-foreign-toplevel-management"_s;
        QTest::newRow("none") << WindowSource::none << u"nothing"_s;
    }
    void eachSourceIsNamed()
    {
        QFETCH(const WindowSource, source);
        QFETCH(const QString, name);
        QVERIFY(sourcesInUse(wayland(source)).contains(u"Applications are seen and hidden by: "_s + name));
        QCOMPARE(whatIsMissing(wayland(source)).isEmpty(), source != WindowSource::none);
    }

    void gnomeWithoutTheExtensionIsToldWhatToInstall()
    {
        DesktopFindings found = wayland(WindowSource::none, CoverManner::x11Window);
        found.isGnomeShell = true;
        QCOMPARE(whatIsMissing(found),
            QStringList { u"Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in."_s });
    }

    void aKWinThatTakesNoScriptIsToldWithItsRemedy()
    {
        DesktopFindings found = wayland(WindowSource::none);
        found.isKWin = true;
        QCOMPARE(whatIsMissing(found),
            QStringList { u"Orvanta Focus cannot see which application is in front: KWin takes no script from it. "
                          "Start it from within Plasma, or log out and in."_s });
    }

    void aSwayWhoseCommandsAreOutOfReachIsToldWithItsRemedy()
    {
        DesktopFindings found = wayland(WindowSource::foreignToplevel);
        QCOMPARE(whatIsMissing(found), QStringList());
        found.isSway = true;
        QCOMPARE(whatIsMissing(found),
            QStringList { u"Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway."_s });
        found.windows = WindowSource::swayCommands;
        QCOMPARE(whatIsMissing(found), QStringList());
    }

    void anUnknownCompositorIsToldWhatWorks()
    {
        QCOMPARE(
            whatIsMissing(wayland(WindowSource::none)), QStringList { u"Application blocking is not available here; website blocking works."_s });
    }

    void aMissingCoverIsToldWithItsRemedy()
    {
        DesktopFindings found = wayland(WindowSource::kwinScript, CoverManner::none);
        QCOMPARE(whatIsMissing(found), QStringList { u"Orvanta Focus cannot cover applications. Start it where XWayland runs."_s });
        found.session.hasQtForWayland = false;
        QCOMPARE(whatIsMissing(found), QStringList { u"Orvanta Focus cannot cover applications. Install Qt's Wayland platform (qt6-wayland)."_s });
    }

    void anUnknownIdleTimeIsTold()
    {
        DesktopFindings found = wayland(WindowSource::kwinScript);
        found.idle = IdleProtocol::none;
        QCOMPARE(
            whatIsMissing(found), QStringList { u"This desktop does not tell how long nothing was typed or moved; activity counts as going on."_s });
    }

    void theCoverIsALayerWhereThereAreLayersAndGoesThroughXWaylandElsewhere()
    {
        SessionTraits session { .isWayland = true, .hasLayers = true, .hasQtForWayland = true, .hasXServer = true, .xServerProblem = {} };
        QCOMPARE(coverManner(session, {}), CoverManner::layerSurface);
        QCOMPARE(coverManner(session, u"xcb"_s), CoverManner::x11Window);
        QCOMPARE(coverManner(session, u"wayland"_s), CoverManner::layerSurface);
        session.hasQtForWayland = false;
        QCOMPARE(coverManner(session, {}), CoverManner::x11Window);
        session.hasQtForWayland = true;
        session.hasLayers = false;
        QCOMPARE(coverManner(session, {}), CoverManner::x11Window);
        QCOMPARE(coverManner(session, u"wayland"_s), CoverManner::none);
        session.hasXServer = false;
        QCOMPARE(coverManner(session, {}), CoverManner::none);
        QCOMPARE(coverManner(SessionTraits { .hasXServer = true, .xServerProblem = {} }, {}), CoverManner::x11Window);
        QCOMPARE(coverManner(SessionTraits {}, {}), CoverManner::none);
    }
};

QTEST_GUILESS_MAIN(TestDesktopReport)
#include "test_desktop_report.moc"
