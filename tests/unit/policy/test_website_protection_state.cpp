#include "app/policy/website_protection_state.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestWebsiteProtectionState : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachStateHasItsTitle()
    {
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::needsActivation), u"Activate website protection"_s);
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::ready), u"Website protection ready"_s);
        QCOMPARE(websiteProtectionTitle(WebsiteProtectionState::blockingActive), u"Blocking Active"_s);
    }
};

QTEST_APPLESS_MAIN(TestWebsiteProtectionState)
#include "test_website_protection_state.moc"
