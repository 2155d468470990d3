#include "app/app_model.h"

#include "app/policy/blocked_applications.h"
#include "support/fake_activation_monitor.h"
#include "support/fake_activity_sources.h"
#include "support/fake_cloud_store.h"
#include "support/fake_dns_proxy_manager.h"
#include "support/fake_extension_manager.h"
#include "support/fake_filter_manager.h"
#include "support/fake_key_value_store.h"
#include "support/fake_overlay_panels.h"
#include "support/fake_running_applications.h"
#include "support/fake_screens.h"
#include "support/fake_secret_store.h"
#include "support/fake_system_focus.h"
#include "support/fake_system_notifications.h"
#include "support/fake_url_opener.h"
#include "support/fake_url_session.h"
#include "support/logged_stores.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <atomic>

using namespace orvanta;
using namespace orvanta::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString domainsKey = u"blockedDomains"_s;
const QString applicationsKey = u"blockedApplications"_s;
const QString extensionAsked = u"extension.requestProperties com.orvanta.focus.OrvantaFocusDNSProxy"_s;
const QString readKey = u"secrets.read com.orvanta.focus orvanta-api-key"_s;
const BlockedApplication editor { u"org.example.Editor.desktop"_s, u"Editor"_s };

QByteArray json(const std::vector<BlockedApplication>& applications)
{
    return *encodeBlockedApplications(applications);
}

QByteArray focusState(bool active)
{
    return active ? R"({"active":true,"inProgressTaskCount":1,"policyRevision":1})"
                  : R"({"active":false,"inProgressTaskCount":0,"policyRevision":1})";
}

class LoggedActivationMonitor : public ActivationMonitor {
public:
    LoggedActivationMonitor(FakeActivationMonitor& monitor, CallLog& log) : m_monitor(monitor), m_log(log) { }

    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated) override
    {
        m_log.add(u"activations.observe"_s);
        return m_monitor.observe(std::move(activated));
    }

private:
    FakeActivationMonitor& m_monitor;
    CallLog& m_log;
};

/// A model among doubles. What is stored is set before start().
struct House {
    AppModelDependencies dependencies()
    {
        return { .defaults = loggedDefaults,
            .cloudStore = loggedCloud,
            .secrets = loggedSecrets,
            .screens = screens,
            .overlayPanels = panels,
            .runningApplications = running,
            .activationMonitor = loggedActivations,
            .extensionManager = extension,
            .filterManager = filter,
            .dnsProxyManager = dnsProxy,
            .systemNotifications = notifications,
            .urlOpener = urlOpener,
            .systemFocus = systemFocus,
            .urlSession = session,
            .activitySources =
                [this] {
                    ++trackers;
                    return activity.sources();
                },
            .service = *ServiceConfiguration::make(u"https://service.example"_s, std::nullopt),
            .statusHint = [](const QString& status) { return u"about: "_s + status; } };
    }

    void start(const QStringList& arguments = {})
    {
        AppModelDependencies all = dependencies();
        all.pollPause = 1ms;
        all.systemFocusPause = 1ms;
        all.pauseAfterFailedSave = pauseAfterFailedSave;
        model = std::make_unique<AppModel>(all, QStringList { u"orvanta-focus"_s } + arguments, notices);
    }

    void storeKey(const QByteArray& key = "key-1") { secrets.items[{ u"com.orvanta.focus"_s, u"orvanta-api-key"_s }] = key; }

    /// Lets every look at the extension and at what is saved find it installed.
    void findInstalled()
    {
        while (extension.pendingProperties() > 0)
            extension.find({ { .isEnabled = true } });
        QCoreApplication::processEvents();
    }

    /// Lets what is being loaded and saved come to its end.
    void settle()
    {
        while (filter.pendingLoads() + filter.pendingSaves() > 0) {
            if (filter.pendingLoads() > 0)
                filter.releaseLoad();
            else
                filter.releaseSave();
            QCoreApplication::processEvents();
        }
    }

    /// Answers the poll that waits, and waits until the model has taken the answer and asks again.
    void poll(int status, const QByteArray& body)
    {
        QTRY_VERIFY(session.pending() == 1);
        const std::size_t asked = session.requests().size();
        session.answer(status, body);
        QTRY_COMPARE(session.requests().size(), asked + 1);
    }

    CallLog log;
    CallLog quiet;
    FakeKeyValueStore defaults;
    FakeCloudStore cloud;
    FakeSecretStore secrets;
    LoggedKeyValueStore loggedDefaults { defaults, log, u"defaults"_s };
    LoggedCloudStore loggedCloud { cloud, log };
    LoggedSecretStore loggedSecrets { secrets, log };
    FakeScreens screens { { { 7, QRect(0, 0, 800, 600) } } };
    FakeOverlayPanels panels { quiet };
    FakeRunningApplications running { quiet };
    FakeActivationMonitor activations;
    LoggedActivationMonitor loggedActivations { activations, log };
    FakeExtensionManager extension { log };
    FakeFilterManager filter { log };
    FakeDnsProxyManager dnsProxy { log };
    FakeSystemNotifications notifications { log };
    FakeUrlOpener urlOpener;
    FakeSystemFocus systemFocus { log };
    FakeUrlSession session;
    ActivityScene activity;        ///< of the tracker's thread alone, once the model is there
    std::atomic<int> trackers = 0; ///< runs of the tracker so far
    QStringList notices;
    std::chrono::milliseconds pauseAfterFailedSave = 1h; ///< what fails is not tried again by itself
    std::unique_ptr<AppModel> model;
};

} // namespace

class TestAppModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The start

    void startsInOrder()
    {
        House house;
        house.defaults.values = { { domainsKey, QStringList { u"a.example"_s } }, { applicationsKey, json({ editor }) } };
        house.storeKey();
        house.start();
        const QString applications = QString::fromUtf8(json({ editor }));
        QCOMPARE(house.log.take(),
            QStringList({
                extensionAsked, u"filter.load"_s, u"dnsProxy.load"_s, u"defaults.value blockedDomains"_s, u"cloud.synchronise"_s,
                u"cloud.value blockedDomains"_s, u"defaults.value blockedApplications"_s, u"cloud.value blockedApplications"_s,
                u"activations.observe"_s, u"notifications.observe com.orvanta.focus.blocked-domain-attempt"_s, extensionAsked, u"filter.load"_s,
                u"notifications.observe com.orvanta.focus.extension-changed"_s, u"defaults.setValue blockedDomains [a.example]"_s,
                u"defaults.setValue blockedApplications "_s + applications, u"cloud.setValue blockedApplications "_s + applications,
                u"cloud.setValue blockedDomains [a.example]"_s, u"cloud.synchronise"_s, u"cloud.observeExternalChanges"_s,
                u"systemFocus.requestNotificationPermission"_s,
                readKey, // the tracker's
                readKey, // the polling's
            }));
        QCOMPARE(house.session.requests().size(), 1U);
    }

    void withAKeyActivityIsTrackedUntilTheModelEnds()
    {
        House house;
        house.storeKey();
        house.start();
        QTRY_COMPARE(house.trackers.load(), 1);
        house.model.reset();
        QVERIFY(!house.activity.log.calls.isEmpty());
    }

    void withoutAKeyNothingIsTracked()
    {
        House house;
        house.start();
        house.model.reset(); // a tracker would have been joined by now
        QCOMPARE(house.trackers.load(), 0);
        QCOMPARE(house.activity.log.calls, QStringList());
    }

    void aFirstStartWritesEmptyListsLocallyAndLeavesTheCloudAlone()
    {
        House house;
        house.start();
        QCOMPARE(house.model->blockedDomains(), QStringList());
        QVERIFY(house.model->blockedApplications().empty());
        QCOMPARE(house.defaults.values, (std::map<QString, StoredValue> { { domainsKey, QStringList() }, { applicationsKey, QByteArray("[]") } }));
        QVERIFY(house.cloud.local.values.empty());
        QVERIFY(house.log.calls.filter(u"cloud.setValue"_s).isEmpty());
    }

    void anEmptyCloudListWinsOverALocalOne()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.cloud.local.values[domainsKey] = QStringList();
        house.start();
        QCOMPARE(house.model->blockedDomains(), QStringList());
        QCOMPARE(house.defaults.values[domainsKey], StoredValue(QStringList()));
    }

    void whatArrivesWithTheSynchronisationWins()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"local.example"_s };
        house.cloud.sendFromElsewhere(domainsKey, QStringList { u"cloud.example"_s });
        house.start();
        QCOMPARE(house.model->blockedDomains(), QStringList({ u"cloud.example"_s }));
    }

    void aCloudListWithAForeignElementIsIgnoredWhole()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.cloud.local.values[domainsKey] = ForeignValue();
        house.start();
        QCOMPARE(house.model->blockedDomains(), QStringList({ u"a.example"_s }));
    }

    void cloudApplicationsThatDoNotDecodeAreIgnored()
    {
        House house;
        house.defaults.values[applicationsKey] = json({ editor });
        house.cloud.local.values[applicationsKey] = QByteArray(R"([{"bundleIdentifier":"x.y"}])");
        house.start();
        QCOMPARE(house.model->blockedApplications(), std::vector({ editor }));
    }

    void localApplicationsThatDoNotDecodeAreAnEmptyList()
    {
        House house;
        house.defaults.values[applicationsKey] = QByteArray("[");
        house.start();
        QVERIFY(house.model->blockedApplications().empty());
    }

    void storedListsAreTakenAsTheyStand()
    {
        House house;
        const QStringList stored { u"B.example"_s, u"a.example"_s, u"a.example"_s };
        house.defaults.values[domainsKey] = stored;
        house.start();
        QCOMPARE(house.model->blockedDomains(), stored);
        QCOMPARE(house.cloud.local.values[domainsKey], StoredValue(stored));
    }

    void aForeignCloudValueIsEnoughToSync()
    {
        House house;
        house.cloud.local.values[applicationsKey] = ForeignValue();
        house.start();
        QCOMPARE(house.cloud.local.values[applicationsKey], StoredValue(QByteArray("[]")));
    }

    // Launch arguments

    void uiTestErasesTheLocalListsAndTouchesNoCloud()
    {
        House house;
        house.defaults.values = { { domainsKey, QStringList { u"a.example"_s } }, { applicationsKey, json({ editor }) } };
        house.cloud.local.values[domainsKey] = QStringList { u"cloud.example"_s };
        house.start({ u"--ui-test"_s });
        QCOMPARE(house.model->blockedDomains(), QStringList());
        QVERIFY(house.model->blockedApplications().empty());
        QCOMPARE(house.log.calls.filter(u"defaults."_s).mid(0, 2),
            QStringList({ u"defaults.remove blockedDomains"_s, u"defaults.remove blockedApplications"_s }));
        house.model->addDomain(u"b.example"_s);
        house.model->addApplication(editor.bundleIdentifier, editor.displayName);
        QVERIFY(house.log.calls.filter(u"cloud."_s).isEmpty());
        QVERIFY(!house.cloud.isObserved());
    }

    void focusActiveStartsActiveAndStaysSoWithoutAKey()
    {
        House house;
        house.start({ u"--focus-active"_s });
        QVERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · Orvanta task"_s);
        QCOMPARE(house.model->permissionSummary(), u"Orvanta API key required"_s);
        QVERIFY(house.session.requests().empty());
    }

    void focusActiveIsKnownToTheBlockerBeforeTheFirstActivation()
    {
        House house;
        house.defaults.values[applicationsKey] = json({ editor });
        house.start({ u"--focus-active"_s });
        house.activations.activate(editor.bundleIdentifier);
        QTRY_COMPARE(house.panels.shownCount(), 1);
    }

    void previewsAreReadFromTheArguments_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<bool>("preview");
        QTest::addColumn<bool>("applicationPreview");
        QTest::newRow("none") << u"--other"_s << false << false;
        QTest::newRow("preview") << u"--blocked-preview"_s << true << false;
        QTest::newRow("application preview") << u"--blocked-application-preview"_s << true << true;
        QTest::newRow("wrong case") << u"--Blocked-Preview"_s << false << false;
        QTest::newRow("not whole") << u"--blocked-preview=1"_s << false << false;
    }

    void previewsAreReadFromTheArguments()
    {
        QFETCH(QString, argument);
        House house;
        house.start({ u"x"_s, argument });
        QTEST(house.model->isBlockedPreview(), "preview");
        QTEST(house.model->isBlockedApplicationPreview(), "applicationPreview");
        QVERIFY(!house.model->focusActive());
    }

    // Editing

    void addingADomainNormalisesAndSavesEverywhere()
    {
        House house;
        house.start();
        (void)house.log.take();
        QSignalSpy changed(house.model.get(), &AppModel::blockedDomainsChanged);
        house.model->addDomain(u"  HTTPS://News.Example/today "_s);
        QCOMPARE(house.model->blockedDomains(), QStringList({ u"news.example"_s }));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(house.log.take(),
            QStringList({ u"defaults.setValue blockedDomains [news.example]"_s, u"defaults.setValue blockedApplications []"_s,
                u"cloud.setValue blockedApplications []"_s, u"cloud.setValue blockedDomains [news.example]"_s, u"cloud.synchronise"_s }));
    }

    void aRejectedDomainChangesAndReportsNothing()
    {
        House house;
        house.start();
        (void)house.log.take();
        QSignalSpy changed(house.model.get(), &AppModel::blockedDomainsChanged);
        const QString summary = house.model->permissionSummary();
        house.model->addDomain(u"localhost"_s);
        QCOMPARE(house.log.take(), QStringList());
        QCOMPARE(changed.size(), 0);
        QCOMPARE(house.model->permissionSummary(), summary);
    }

    void removingADomainThatIsNotThereStillSaves()
    {
        House house;
        house.start();
        (void)house.log.take();
        house.model->removeDomain(u"absent.example"_s);
        QCOMPARE(house.log.take().size(), 5);
        QCOMPARE(house.cloud.local.values[domainsKey], StoredValue(QStringList()));
    }

    void addingAListedApplicationReplacesItsName()
    {
        House house;
        house.start();
        house.model->addApplication(u"com.example.App"_s, u"Example"_s);
        house.model->addApplication(u" com.example.App\n"_s, u"Example Two "_s);
        QCOMPARE(house.model->blockedApplications(), std::vector<BlockedApplication>({ { u"com.example.App"_s, u"Example Two"_s } }));
        QCOMPARE(house.cloud.local.values[applicationsKey], StoredValue(json({ { u"com.example.App"_s, u"Example Two"_s } })));
    }

    void anApplicationWithoutANameIsDropped()
    {
        House house;
        house.start();
        (void)house.log.take();
        house.model->addApplication(u"com.example.App"_s, u"   "_s);
        QCOMPARE(house.log.take(), QStringList());
    }

    void removingAnApplicationSaves()
    {
        House house;
        house.defaults.values[applicationsKey] = json({ editor });
        house.start();
        house.model->removeApplication(editor.bundleIdentifier);
        QVERIFY(house.model->blockedApplications().empty());
        QCOMPARE(house.cloud.local.values[applicationsKey], StoredValue(QByteArray("[]")));
    }

    void applicationsThatCannotBeEncodedAreNotWrittenButDomainsAre()
    {
        House house;
        house.start();
        house.model->addApplication(u"x."_s + QChar(0xD800), u"Broken"_s);
        (void)house.log.take();
        house.model->addDomain(u"a.example"_s);
        QCOMPARE(house.log.take(),
            QStringList(
                { u"defaults.setValue blockedDomains [a.example]"_s, u"cloud.setValue blockedDomains [a.example]"_s, u"cloud.synchronise"_s }));
    }

    void theBlockerAsksForTheListAsItIsNow()
    {
        House house;
        house.start({ u"--focus-active"_s });
        house.activations.activate(editor.bundleIdentifier);
        house.model->addApplication(editor.bundleIdentifier, editor.displayName);
        house.activations.activate(editor.bundleIdentifier);
        QTRY_COMPARE(house.panels.shownCount(), 1);
        house.model->removeApplication(editor.bundleIdentifier);
        house.activations.activate(u"other.desktop"_s);
        QTRY_COMPARE(house.panels.shownCount(), 0);
    }

    void whatCannotBeStoredIsSaidOnceAndKeptInMemory()
    {
        House house;
        house.notices = { u"The settings file was damaged"_s };
        house.start();
        house.defaults.writeFailure = PlatformError { u"The disk is full"_s };
        house.model->addDomain(u"a.example"_s);
        house.model->addDomain(u"b.example"_s);
        QCOMPARE(house.model->notices(), QStringList({ u"The settings file was damaged"_s, u"The disk is full"_s }));
        QCOMPARE(house.model->blockedDomains(), QStringList({ u"a.example"_s, u"b.example"_s }));
    }

    void aFailureIsToldUntilTheSameValueIsSaved()
    {
        House house;
        house.start();
        house.cloud.local.writeFailure = PlatformError { u"The folder is read-only"_s };
        house.model->addDomain(u"a.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"The folder is read-only"_s });
        const QSignalSpy told(house.model.get(), &AppModel::noticesChanged);

        // Another reason takes the place of the first; another store is another matter.
        house.cloud.local.writeFailure = PlatformError { u"The disk is full"_s };
        house.model->addDomain(u"b.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"The disk is full"_s });
        house.cloud.local.writeFailure.reset();
        house.defaults.writeFailure = PlatformError { u"The other disk is full"_s };
        house.model->addDomain(u"c.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"The other disk is full"_s });
        const auto before = told.size();
        QVERIFY(before > 0);
        house.defaults.writeFailure.reset();
        house.model->addDomain(u"d.example"_s);
        QCOMPARE(house.model->notices(), QStringList());
        QVERIFY(told.size() > before);
    }

    void whatStaysUnsavedIsStillToldWhenAnotherValueIsSaved()
    {
        House house;
        house.start();
        house.defaults.writeFailure = PlatformError { u"The disk is full"_s };
        house.model->addApplication(editor.bundleIdentifier, editor.displayName);
        house.defaults.writeFailure.reset();
        const QString broken = u"x."_s + QChar(0xD800); // a list that holds it cannot be written down
        house.model->addApplication(broken, u"Broken"_s);
        QCOMPARE(house.model->notices(), QStringList { u"The disk is full"_s });
        house.model->removeApplication(broken);
        QCOMPARE(house.model->notices(), QStringList());
    }

    void whatCouldNotBeSavedIsTriedOnceMore()
    {
        House house;
        house.pauseAfterFailedSave = 1ms;
        house.start();
        house.cloud.local.writeFailure = PlatformError { u"Somebody else is writing"_s };
        house.model->addDomain(u"a.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"Somebody else is writing"_s });
        house.cloud.local.writeFailure.reset();
        QTRY_COMPARE(house.model->notices(), QStringList());
        QCOMPARE(house.cloud.local.values,
            (std::map<QString, StoredValue> { { domainsKey, QStringList { u"a.example"_s } }, { applicationsKey, QByteArray("[]") } }));
    }

    void whatFailsAgainWaitsForTheNextChange()
    {
        House house;
        house.pauseAfterFailedSave = 1ms;
        house.start();
        (void)house.log.take();
        house.cloud.local.writeFailure = PlatformError { u"The folder is read-only"_s };
        house.model->addDomain(u"a.example"_s);
        const auto attempts = [&] { return house.log.calls.filter(u"cloud.setValue"_s).size(); };
        QTRY_COMPARE(attempts(), 4); // both lists, twice
        QTimer clock;
        const QSignalSpy ticked(&clock, &QTimer::timeout);
        clock.start(1ms);
        QTRY_VERIFY(ticked.size() >= 20); // long after a third attempt
        QCOMPARE(attempts(), 4);
        QCOMPARE(house.model->notices(), QStringList { u"The folder is read-only"_s });
        QVERIFY(house.log.calls.filter(u"defaults.setValue"_s).size() == 2); // which did not fail
    }

    void unlessItIsToldOtherwiseItWaitsLongerThanAFileIsLeftToItsWriter() { QVERIFY(House().dependencies().pauseAfterFailedSave == 3000ms); }

    void whatHappenedToAFileWhileItWasWrittenIsTold()
    {
        House house;
        house.start();
        const QSignalSpy told(house.model.get(), &AppModel::noticesChanged);
        house.cloud.local.problem = u"It was moved aside"_s;
        house.model->addDomain(u"a.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"It was moved aside"_s });
        QCOMPARE(told.size(), 1);
        // It stays true whatever is saved later, and is told no second time.
        house.cloud.local.problem = u"It was moved aside"_s;
        house.model->addDomain(u"b.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"It was moved aside"_s });
        QCOMPARE(told.size(), 1);
    }

    void aFileThatIsInTheWayAndStaysThereIsToldOnce()
    {
        House house;
        house.start();
        house.cloud.local.writeFailure = PlatformError { u"It could not be moved aside"_s };
        house.cloud.local.problem = u"It could not be moved aside"_s;
        house.model->addDomain(u"a.example"_s);
        QCOMPARE(house.model->notices(), QStringList { u"It could not be moved aside"_s });
        house.cloud.local.writeFailure.reset();
        house.model->addDomain(u"b.example"_s);
        QCOMPARE(house.model->notices(), QStringList());
    }

    // Changes from elsewhere

    void aChangeFromElsewhereReplacesTheListsAndIsNotEchoed()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.start();
        (void)house.log.take();
        house.cloud.sendFromElsewhere(domainsKey, QStringList { u"cloud.example"_s });
        house.cloud.sendFromElsewhere(applicationsKey, json({ editor }));
        house.cloud.deliver();
        QTRY_COMPARE(house.model->blockedDomains(), QStringList({ u"cloud.example"_s }));
        QCOMPARE(house.model->blockedApplications(), std::vector({ editor }));
        QCOMPARE(house.log.take(),
            QStringList(
                { u"cloud.value blockedDomains"_s, u"cloud.value blockedApplications"_s, u"defaults.setValue blockedDomains [cloud.example]"_s,
                    u"defaults.setValue blockedApplications "_s + QString::fromUtf8(json({ editor })) }));
    }

    void foreignValuesFromElsewhereLeaveTheListsAsTheyAre()
    {
        House house;
        house.defaults.values = { { domainsKey, QStringList { u"a.example"_s } }, { applicationsKey, json({ editor }) } };
        house.start();
        (void)house.log.take();
        house.cloud.sendFromElsewhere(domainsKey, ForeignValue());
        house.cloud.sendFromElsewhere(applicationsKey, QByteArray("{}"));
        house.cloud.deliver();
        QTRY_COMPARE(house.log.calls.size(), 4);
        QCOMPARE(house.model->blockedDomains(), QStringList({ u"a.example"_s }));
        QCOMPARE(house.model->blockedApplications(), std::vector({ editor }));
    }

    // Polling

    void asksWithTheKeyAtTheServicesOrigin()
    {
        House house;
        house.storeKey("secret");
        house.start();
        const HttpRequest request = house.session.requests().front();
        QCOMPARE(request.url, QUrl(u"https://service.example/api/focus-state"_s));
        QCOMPARE(request.method, QByteArray("GET"));
        QVERIFY(std::ranges::find(request.headers, std::pair<QByteArray, QByteArray>("Authorization", "Bearer secret")) != request.headers.end());
        QCOMPARE(house.model->permissionSummary(), u"Setup required"_s);
    }

    void unlessItIsToldOtherwiseItPausesThreeSecondsBetweenPolls() { QVERIFY(House().dependencies().pollPause == 3000ms); }

    void theServiceSwitchesFocusOnAndOff()
    {
        House house;
        house.storeKey();
        house.defaults.values[applicationsKey] = json({ editor });
        house.start();
        QSignalSpy focus(house.model.get(), &AppModel::focusActiveChanged);
        house.poll(200, focusState(true));
        QVERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · Orvanta task"_s);
        QCOMPARE(house.model->permissionSummary(), u"Orvanta connected"_s);
        house.activations.activate(editor.bundleIdentifier);
        QTRY_COMPARE(house.panels.shownCount(), 1);
        house.poll(200, focusState(true));
        QCOMPARE(focus.size(), 2); // observers hear of each assignment
        house.poll(200, focusState(false));
        QVERIFY(!house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus inactive"_s);
        // The cover stays until the next activation of another application.
        QCOMPARE(house.panels.shownCount(), 1);
        house.activations.activate(u"other.desktop"_s);
        QTRY_COMPARE(house.panels.shownCount(), 0);
    }

    void tenFailedPollsChangeNothingButTheText()
    {
        House house;
        house.storeKey();
        house.start();
        house.poll(200, focusState(true));
        QSignalSpy focus(house.model.get(), &AppModel::focusActiveChanged);
        for (int round = 0; round < 10; ++round)
            house.poll(round % 2 ? 500 : 401, {});
        QVERIFY(house.model->focusActive());
        QCOMPARE(focus.size(), 0);
        QCOMPARE(house.model->permissionSummary(), u"Orvanta request failed (HTTP 500)"_s);
        house.poll(200, focusState(true));
        QCOMPARE(house.model->permissionSummary(), u"Orvanta connected"_s);
    }

    void aLostConnectionShowsItsOwnText()
    {
        House house;
        house.storeKey();
        house.start();
        house.session.fail(u"Connection refused"_s);
        QTRY_COMPARE(house.model->permissionSummary(), u"Connection refused"_s);
    }

    void anAnswerWithoutAKeyFailsTheWholePoll()
    {
        House house;
        house.storeKey();
        house.start();
        house.poll(200, R"({"active":true,"inProgressTaskCount":1})");
        QVERIFY(!house.model->focusActive());
        QVERIFY(house.model->permissionSummary() != u"Orvanta connected"_s);
    }

    void aMissingKeyIsFinal()
    {
        House house;
        house.start();
        QCOMPARE(house.model->permissionSummary(), u"Orvanta API key required"_s);
        house.storeKey();
        QCoreApplication::processEvents();
        QVERIFY(house.session.requests().empty());
        QCOMPARE(house.log.calls.count(readKey), 2);
    }

    // Website protection

    void websiteProtectionBeginsAsNotActivated()
    {
        House house;
        house.start();
        QCOMPARE(house.model->websiteProtectionState(), WebsiteProtectionState::needsActivation);
        QCOMPARE(house.model->websiteProtectionTitle(), u"Activate website protection"_s);
        QVERIFY(!house.model->websiteBlockingActive());
    }

    void theUserActivatesWebsiteProtection()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.start();
        house.settle();
        QSignalSpy changed(house.model.get(), &AppModel::websiteProtectionStateChanged);
        house.model->activateWebsiteProtection();
        QCOMPARE(house.model->permissionSummary(), u"Requesting website protection"_s);
        house.extension.finish(ActivationResult::completed);
        QCoreApplication::processEvents();
        QCOMPARE(house.model->permissionSummary(), u"Website protection installed"_s);
        house.settle();
        QCOMPARE(house.model->permissionSummary(), u"Website protection ready"_s);
        QCOMPARE(house.model->websiteProtectionTitle(), u"Website protection ready"_s);
        QCOMPARE(house.filter.attempts().back().providerConfiguration->vendorConfiguration,
            (QVariantMap { { domainsKey, QStringList { u"a.example"_s } } }));
        QVERIFY(!house.filter.attempts().back().isEnabled);
        QCOMPARE(changed.size(), 1);
    }

    void outsideItsPlaceWebsiteProtectionIsRefused()
    {
        House house;
        house.extension.bundlePath = u"/home/someone/build/bin/orvanta-focus"_s;
        house.start();
        house.model->activateWebsiteProtection();
        QCOMPARE(house.model->permissionSummary(), u"Install Orvanta Focus in Applications first"_s);
        QCOMPARE(house.model->permissionHint(), u"about: Install Orvanta Focus in Applications first"_s);
        QCOMPARE(house.extension.pendingActivations(), 0U);
    }

    void websitesAreBlockedExactlyWhileFocusIsActive()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.start();
        house.findInstalled();
        house.settle();
        (void)house.log.take();
        house.model->systemFocusChanged(true);
        house.settle();
        QCOMPARE(house.log.take(), QStringList({ u"filter.load"_s, u"filter.save enabled [a.example]"_s }));
        QCOMPARE(house.model->websiteProtectionTitle(), u"Blocking Active"_s);
        QVERIFY(house.model->websiteBlockingActive());
        house.model->systemFocusChanged(true); // no change, no pass
        QCOMPARE(house.log.take(), QStringList());
        house.model->systemFocusChanged(false);
        QVERIFY(!house.model->websiteBlockingActive()); // at once, before anything is saved
        house.settle();
        QCOMPARE(house.log.take(), QStringList({ u"filter.load"_s, u"filter.save disabled [a.example]"_s }));
    }

    void thePollsAnswerReachesWebsiteProtectionToo()
    {
        House house;
        house.storeKey();
        house.start();
        house.findInstalled();
        house.settle();
        house.poll(200, focusState(true));
        house.settle();
        QVERIFY(house.filter.saved.isEnabled);
        house.poll(200, focusState(false));
        house.settle();
        QVERIFY(!house.filter.saved.isEnabled);
    }

    void anEditReachesTheFilterBetweenTheTwoLists()
    {
        House house;
        house.start();
        house.findInstalled();
        house.settle();
        (void)house.log.take();
        house.model->addDomain(u"news.example"_s);
        QCOMPARE(house.log.take(),
            QStringList({ u"defaults.setValue blockedDomains [news.example]"_s, u"filter.load"_s, u"defaults.setValue blockedApplications []"_s,
                u"cloud.setValue blockedApplications []"_s, u"cloud.setValue blockedDomains [news.example]"_s, u"cloud.synchronise"_s }));
        house.settle();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled [news.example]"_s }));
    }

    void aChangeFromElsewhereReachesTheFilterAfterBothLists()
    {
        House house;
        house.start();
        house.findInstalled();
        house.settle();
        (void)house.log.take();
        house.cloud.sendFromElsewhere(domainsKey, QStringList { u"far.example"_s });
        house.cloud.deliver();
        QTRY_COMPARE(house.model->blockedDomains(), QStringList { u"far.example"_s });
        QCOMPARE(house.log.take().filter(QRegularExpression(u"^(defaults.set|filter)"_s)),
            QStringList({ u"defaults.setValue blockedDomains [far.example]"_s, u"defaults.setValue blockedApplications []"_s, u"filter.load"_s }));
        house.settle();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled [far.example]"_s }));
    }

    void whatFiltersMayEndByItselfAndComeBack()
    {
        House house;
        house.start({ u"--focus-active"_s });
        house.settle();
        house.findInstalled();
        house.settle();
        house.model->addDomain(u"news.example"_s);
        house.settle();
        QVERIFY(house.model->websiteBlockingActive());
        house.notifications.post(u"com.orvanta.focus.extension-changed"_s);
        house.extension.find({});
        QCoreApplication::processEvents();
        QCOMPARE(house.model->websiteProtectionTitle(), u"Activate website protection"_s);
        house.settle();
        house.notifications.post(u"com.orvanta.focus.extension-changed"_s);
        house.findInstalled();
        house.settle();
        QVERIFY(house.model->websiteBlockingActive());
    }

    void aRefusedWebsiteOpensTheServicesPage()
    {
        House house;
        house.start();
        house.running.start({ .bundleIdentifier = u"org.mozilla.firefox"_s, .localizedName = u"Firefox"_s });
        house.notifications.post(u"com.orvanta.focus.blocked-domain-attempt"_s);
        QTRY_COMPARE(house.urlOpener.opened, QList<QUrl> { QUrl(u"https://service.example/focus/blocked"_s) });
    }

    void theConfigurationOfEarlierVersionsIsRemoved()
    {
        House house;
        house.dnsProxy.saved.providerProtocol = { u"com.orvanta.focus.OrvantaFocusDNSProxy"_s };
        house.start();
        (void)house.log.take();
        house.dnsProxy.releaseLoad();
        QCOMPARE(house.log.take(), QStringList { u"dnsProxy.remove"_s });
    }

    // The two sources of focus

    void theSystemsFocusHoldsFocusWhenTheTaskEnds()
    {
        House house;
        house.storeKey();
        house.start();
        house.poll(200, focusState(true));
        house.model->systemFocusChanged(true);
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · macOS Focus + Orvanta task"_s);
        house.poll(200, focusState(false));
        QVERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · macOS Focus"_s);
        house.model->systemFocusChanged(false);
        QVERIFY(!house.model->focusActive());
    }

    void theTaskHoldsFocusWhenTheSystemsFocusEnds()
    {
        House house;
        house.defaults.values[domainsKey] = QStringList { u"a.example"_s };
        house.storeKey();
        house.start();
        house.findInstalled();
        house.settle();
        house.poll(200, focusState(true));
        house.settle();
        QVERIFY(house.model->websiteBlockingActive());
        (void)house.log.take();
        house.model->systemFocusChanged(true);
        house.settle();
        house.model->systemFocusChanged(false);
        house.settle();
        QVERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · Orvanta task"_s);
        // Websites were blocked all the while, and nothing was passed on.
        QVERIFY(house.model->websiteBlockingActive());
        QCOMPARE(house.log.take(), QStringList());
    }

    void withoutAKeyFocusFollowsTheSystemAlone()
    {
        House house;
        house.start();
        house.model->systemFocusChanged(true);
        QVERIFY(house.model->focusActive());
    }

    void theMonitorOfTheSystemsFocusSwitchesFocusOnAndOff()
    {
        House house;
        house.defaults.values[applicationsKey] = json({ editor });
        house.start();
        QSignalSpy focus(house.model.get(), &AppModel::focusActiveChanged);
        house.systemFocus.answerNotificationPermission(false);
        QCOMPARE(focus.size(), 1); // the first report, that it is off
        QVERIFY(!house.model->focusActive());
        house.systemFocus.isFocusedNow = true;
        QTRY_VERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · macOS Focus"_s);
        house.activations.activate(editor.bundleIdentifier);
        QTRY_COMPARE(house.panels.shownCount(), 1);
        house.systemFocus.isFocusedNow = false;
        QTRY_VERIFY(!house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus inactive"_s);
        house.activations.activate(u"other.desktop"_s);
        QTRY_COMPARE(house.panels.shownCount(), 0);
    }

    void theFirstReportOfTheSystemsFocusLeavesATaskActive()
    {
        House house;
        house.start({ u"--focus-active"_s });
        house.systemFocus.answerNotificationPermission(true);
        QVERIFY(house.model->focusActive());
        QCOMPARE(house.model->focusStatusLabel(), u"Focus active · Orvanta task"_s);
    }

    void nothingIsCalledOnceTheModelIsGone()
    {
        House house;
        house.storeKey();
        house.start();
        house.cloud.sendFromElsewhere(domainsKey, QStringList { u"late.example"_s });
        house.cloud.deliver();
        house.model.reset();
        house.session.answer(200, focusState(true));
        (void)house.log.take();
        QCoreApplication::processEvents();
        QCOMPARE(house.log.take(), QStringList());
        QVERIFY(!house.cloud.isObserved());
        QVERIFY(!house.activations.isObserved());
    }
};

QTEST_GUILESS_MAIN(TestAppModel)
#include "test_app_model.moc"
