#include "app/policy/focus_activation.h"
#include "support/fake_url_opener.h"
#include "website/website_protection_rules.h"
#include "website/website_protection_state.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestWebsiteProtectionRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theStateFollowsFromTheThreeFlags()
    {
        using enum WebsiteProtectionState;
        for (const bool enabled : { false, true })
            for (const bool focus : { false, true })
                QVERIFY(websiteProtectionState(false, enabled, focus) == needsActivation);
        QVERIFY(websiteProtectionState(true, true, true) == blockingActive);
        QVERIFY(websiteProtectionState(true, true, false) == ready); // until the next save completes
        QVERIFY(websiteProtectionState(true, false, true) == ready);
        QVERIFY(websiteProtectionState(true, false, false) == ready);
        QVERIFY(WebsiteProtectionState() == needsActivation);
    }

    void everyStateHasItsTitle()
    {
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::needsActivation), u"Activate website protection"_s);
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::ready), u"Website protection ready"_s);
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::blockingActive), u"Blocking Active"_s);
    }

    void onlyABundleInApplicationsMayInstall_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("isAllowed");
        QTest::newRow("directly in it") << u"/Applications/Orvanta Focus.app"_s << true;
        QTest::newRow("in a subfolder") << u"/Applications/Tools/Orvanta Focus.app"_s << true;
        QTest::newRow("the bare folder") << u"/Applications"_s << true;
        QTest::newRow("the folder with its slash") << u"/Applications/"_s << true;
        QTest::newRow("a name that only begins so") << u"/ApplicationsX/Orvanta Focus.app"_s << false;
        QTest::newRow("a user's own folder") << u"/Users/ada/Applications/Orvanta Focus.app"_s << false;
        QTest::newRow("a disk image") << u"/Volumes/Orvanta Focus/Orvanta Focus.app"_s << false;
        QTest::newRow("a build folder") << u"/Users/ada/build/Orvanta Focus.app"_s << false;
        QTest::newRow("another case") << u"/applications/Orvanta Focus.app"_s << false;
        QTest::newRow("relative") << u"Applications/Orvanta Focus.app"_s << false;
        QTest::newRow("nothing is resolved") << u"/./Applications/Orvanta Focus.app"_s << false;
        QTest::newRow("empty") << QString() << false;
    }

    void onlyABundleInApplicationsMayInstall()
    {
        QFETCH(QString, path);
        QTEST(SystemExtensionHostLocation::isAllowed(path), "isAllowed");
    }

    void onlyARealChangeOfFocusCounts()
    {
        QVERIFY(FocusStateTransition::counts(false, true));
        QVERIFY(FocusStateTransition::counts(true, false));
        QVERIFY(!FocusStateTransition::counts(false, false));
        QVERIFY(!FocusStateTransition::counts(true, true));
    }

    void aDisabledFilterIsRepairedOnlyUnderFocusAndWhenInstalled()
    {
        for (const bool installed : { false, true })
            for (const bool enabled : { false, true })
                for (const bool focus : { false, true })
                    QCOMPARE(FilterRepair::isNeeded(installed, enabled, focus), installed && !enabled && focus);
    }

    void onlyTheUserOpensTheSettings()
    {
        using enum SystemExtensionApprovalEvent;
        QVERIFY(SystemExtensionApprovalRouting::opensSystemSettings(explicitUserRequest));
        QVERIFY(!SystemExtensionApprovalRouting::opensSystemSettings(approvalRequired));
        QVERIFY(!SystemExtensionApprovalRouting::opensSystemSettings(activationSubmitted));
    }

    void theSettingsLinkNamesTheNetworkExtensionPage()
    {
        FakeUrlOpener opener;
        SystemExtensionApprovalRouting::openSystemSettings(opener);
        QCOMPARE(opener.opened, QList<QUrl>({ QUrl(u"x-apple.systempreferences:com.apple.Network-Settings.extension"_s) }));
        QCOMPARE(opener.opened.front().toString(), u"x-apple.systempreferences:com.apple.Network-Settings.extension"_s);
    }
};

QTEST_GUILESS_MAIN(TestWebsiteProtectionRules)
#include "test_website_protection_rules.moc"
