#include "website/blocked_page_presenter.h"

#include "support/fake_running_applications.h"
#include "support/fake_system_notifications.h"
#include "support/fake_url_opener.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString attempt = u"com.orvanta.focus.blocked-domain-attempt"_s;
const QUrl page(u"https://service.example/focus/blocked"_s);

struct House {
    House() { running.start({ .bundleIdentifier = u"com.google.Chrome"_s, .localizedName = u"Chrome"_s }); }

    void bringToFront(const std::optional<QString>& identifier) { running.start({ .bundleIdentifier = identifier, .localizedName = u"It"_s }); }

    /// The extension posts, and the task that this starts runs.
    void post()
    {
        notifications.post(attempt);
        QCoreApplication::processEvents();
    }

    CallLog log;
    FakeSystemNotifications notifications { log };
    FakeRunningApplications running { log };
    FakeUrlOpener opener;
    BlockedPagePresenter::PointInTime now { 1h };
    std::unique_ptr<BlockedPagePresenter> presenter
        = std::make_unique<BlockedPagePresenter>(notifications, running, opener, page, [this] { return now; });
};

} // namespace

class TestBlockedPagePresenter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRefusedWebsiteOpensTheBlockedPage()
    {
        House house;
        house.presenter->startObserving();
        QCOMPARE(house.log.take(), QStringList({ u"notifications.observe com.orvanta.focus.blocked-domain-attempt"_s }));
        house.post();
        QCOMPARE(house.opener.opened, QList<QUrl>({ page }));
    }

    void theFirstOneOpensHoweverEarlyTheClock()
    {
        House house;
        house.now = {};
        house.presenter->present(house.now);
        QCOMPARE(house.opener.opened.size(), 1);
    }

    void noticesThatAreCloserThanTwoSecondsOpenOnePage()
    {
        House house;
        house.presenter->startObserving();
        house.post();
        house.now += 1900ms;
        house.post();
        QCOMPARE(house.opener.opened.size(), 1);
    }

    void noticesThatAreTwoSecondsApartOpenTwoPages()
    {
        House house;
        house.presenter->startObserving();
        house.post();
        house.now += 2000ms;
        house.post();
        QCOMPARE(house.opener.opened.size(), 2);
    }

    void theSpacingIsMeasuredFromTheLastOpening()
    {
        House house;
        house.presenter->present(house.now);
        house.presenter->present(house.now + 1999ms);
        house.presenter->present(house.now + 2000ms);
        house.presenter->present(house.now + 3999ms);
        QCOMPARE(house.opener.opened.size(), 2);
    }

    void aBurstOpensOnePage()
    {
        House house;
        house.presenter->startObserving();
        for (int refused = 0; refused < 11; ++refused) {
            house.now += 20ms;
            house.post();
        }
        QCOMPARE(house.opener.opened.size(), 1);
    }

    void withoutABrowserInFrontNothingOpensAndTheSpacingDoesNotStart()
    {
        House house;
        house.presenter->startObserving();
        house.bringToFront(u"org.example.Editor.desktop"_s);
        house.post();
        house.bringToFront(std::nullopt);
        house.post();
        house.running.leaveNothingInFront();
        house.post();
        QVERIFY(house.opener.opened.isEmpty());
        house.bringToFront(u"org.mozilla.firefox"_s);
        house.now += 1ms;
        house.post();
        QCOMPARE(house.opener.opened.size(), 1);
    }

    void theKnownBrowsersAreKnownExactly_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("isBrowser");
        for (const char* browser : { "app.zen-browser.zen", "com.apple.Safari", "com.brave.Browser", "com.google.Chrome", "com.microsoft.edgemac",
                 "company.thebrowser.Browser", "org.mozilla.firefox" })
            QTest::newRow(browser) << QString::fromLatin1(browser) << true;
        for (const char* other : { "com.apple.safari", "com.google.Chrome.canary", "com.google", "org.mozilla.thunderbird", "" })
            QTest::newRow(*other ? other : "empty") << QString::fromLatin1(other) << false;
    }

    void theKnownBrowsersAreKnownExactly()
    {
        QFETCH(QString, identifier);
        QFETCH(bool, isBrowser);
        House house;
        house.bringToFront(identifier);
        house.presenter->present(house.now);
        QCOMPARE(house.opener.opened.size(), isBrowser ? 1 : 0);
    }

    void startingTwiceRegistersOnce()
    {
        House house;
        house.presenter->startObserving();
        house.presenter->startObserving();
        QCOMPARE(house.log.take().size(), 1);
    }

    void othersNotificationsAreNoBusinessOfOurs()
    {
        House house;
        house.presenter->startObserving();
        house.notifications.post(u"com.orvanta.focus.something-else"_s);
        QCoreApplication::processEvents();
        QVERIFY(house.opener.opened.isEmpty());
    }

    void thePageIsPresentedInATaskOfItsOwnWithTheTimeItHasThen()
    {
        House house;
        house.presenter->startObserving();
        house.presenter->present(house.now);
        house.notifications.post(attempt);
        QCOMPARE(house.opener.opened.size(), 1);
        house.now += 2s;
        QCoreApplication::processEvents();
        QCOMPARE(house.opener.opened.size(), 2);
    }

    void aPresenterThatIsGoneIsRegisteredNoMoreAndOpensNothing()
    {
        House house;
        house.presenter->startObserving();
        house.notifications.post(attempt);
        house.presenter.reset();
        QVERIFY(!house.notifications.isObserved());
        house.post();
        QVERIFY(house.opener.opened.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestBlockedPagePresenter)
#include "test_blocked_page_presenter.moc"
