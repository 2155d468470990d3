#include "website/network_protection_controller.h"

#include "support/fake_extension_manager.h"
#include "support/fake_filter_manager.h"
#include "support/fake_url_opener.h"

#include <QTest>
#include <QThread>

#include <functional>
#include <thread>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QString extension = u"com.orvanta.focus.OrvantaFocusDNSProxy"_s;
const QString askedProperties = u"extension.requestProperties com.orvanta.focus.OrvantaFocusDNSProxy"_s;
const QString askedActivation = u"extension.activate com.orvanta.focus.OrvantaFocusDNSProxy"_s;
const QString filterLoad = u"filter.load"_s;
const QString needsActivation = u"state needsActivation"_s;
const QString ready = u"state ready"_s;
const QString blockingActive = u"state blockingActive"_s;

QString nameOf(WebsiteProtectionState state)
{
    switch (state) {
    case WebsiteProtectionState::needsActivation:
        return needsActivation;
    case WebsiteProtectionState::ready:
        return ready;
    case WebsiteProtectionState::blockingActive:
        return blockingActive;
    }
    return {};
}

FilterConfiguration savedFor(const std::optional<QString>& identifier, bool isEnabled)
{
    FilterConfiguration configuration;
    configuration.providerConfiguration = FilterProviderConfiguration { .filterDataProviderBundleIdentifier = identifier };
    configuration.isEnabled = isEnabled;
    return configuration;
}

/// A controller among doubles. One log holds what it asks of the system and what it reports, in the order of both.
struct House {
    void start()
    {
        controller = std::make_unique<NetworkProtectionController>(extensions, filter, opener);
        controller->onStatusChange = [this](const QString& text) { log.add(u"status "_s + text); };
        controller->onStateChange = [this](WebsiteProtectionState state) { log.add(nameOf(state)); };
    }

    /// Starts, and lets the first refresh end: the extension enabled or not, `filter.saved` as it stands.
    void startWith(bool isInstalled)
    {
        start();
        extensions.find(isInstalled ? std::vector<ExtensionProperties> { { .isEnabled = true } } : std::vector<ExtensionProperties> {});
        filter.releaseLoad();
        mainThread();
        (void)log.take();
    }

    static void mainThread() { QCoreApplication::processEvents(); }

    /// The extension was there and is no more, or is there again.
    void refreshTo(bool isInstalled)
    {
        controller->refresh();
        extensions.find({ { isInstalled } });
        filter.releaseLoad();
        mainThread();
        (void)log.take();
    }

    /// One pass that is in flight ends well.
    void finishPass()
    {
        filter.releaseLoad();
        filter.releaseSave();
        mainThread();
    }

    CallLog log;
    FakeExtensionManager extensions { log };
    FakeFilterManager filter { log };
    FakeUrlOpener opener;
    std::unique_ptr<NetworkProtectionController> controller;
};

} // namespace

class TestNetworkProtectionController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Finding out

    void beginsByAskingForTheExtensionThenForTheConfiguration()
    {
        House house;
        house.start();
        QCOMPARE(house.log.take(), QStringList({ askedProperties, filterLoad }));
        QVERIFY(house.opener.opened.isEmpty());
    }

    void answersAreTakenOnTheMainThreadInTheirOwnOrder()
    {
        House house;
        house.filter.saved = savedFor(extension, false);
        house.start();
        (void)house.log.take();
        house.filter.releaseLoad();
        house.extensions.find({ { .isEnabled = true } });
        QCOMPARE(house.log.take(), QStringList());
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ needsActivation, ready }));
    }

    void anyEnabledVersionCountsAsInstalled_data()
    {
        QTest::addColumn<std::vector<ExtensionProperties>>("properties");
        QTest::addColumn<QString>("state");
        QTest::newRow("none") << std::vector<ExtensionProperties> {} << needsActivation;
        QTest::newRow("disabled") << std::vector<ExtensionProperties> { { false } } << needsActivation;
        QTest::newRow("enabled") << std::vector<ExtensionProperties> { { true } } << ready;
        QTest::newRow("the second of three") << std::vector<ExtensionProperties> { { false }, { true }, { false } } << ready;
    }

    void anyEnabledVersionCountsAsInstalled()
    {
        QFETCH(std::vector<ExtensionProperties>, properties);
        QFETCH(QString, state);
        House house;
        house.start();
        (void)house.log.take();
        house.extensions.find(properties);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ state }));
    }

    void anExtensionThatIsGoneIsInstalledNoMore()
    {
        House house;
        house.startWith(true);
        house.controller->refresh();
        house.extensions.find({});
        house.filter.releaseLoad();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ askedProperties, filterLoad, needsActivation, needsActivation }));
        house.controller->setBlockedDomains({ u"a.example"_s });
        QCOMPARE(house.log.take(), QStringList());
    }

    void aFailedLookForTheExtensionIsReportedAndChangesNothing()
    {
        House house;
        house.startWith(true);
        house.controller->refresh();
        (void)house.log.take();
        house.extensions.failProperties(u"The system does not answer"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status The system does not answer"_s }));
        house.controller->setFocusActive(false);
        QCOMPARE(house.log.take(), QStringList({ ready, filterLoad }));
    }

    void aFailedLoadInARefreshIsSilent()
    {
        House house;
        house.start();
        (void)house.log.take();
        house.filter.failLoad(u"Not readable"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList());
    }

    void onlyAConfigurationThatNamesOurExtensionExists_data()
    {
        QTest::addColumn<FilterConfiguration>("saved");
        QTest::addColumn<QString>("state");
        FilterConfiguration providerless;
        providerless.isEnabled = true;
        QTest::newRow("no provider") << providerless << ready;
        QTest::newRow("a provider without identifier") << savedFor(std::nullopt, true) << ready;
        QTest::newRow("another provider") << savedFor(u"com.example.Filter"_s, true) << ready;
        QTest::newRow("another case") << savedFor(extension.toLower(), true) << ready;
        QTest::newRow("ours, disabled") << savedFor(extension, false) << ready;
        QTest::newRow("ours, enabled") << savedFor(extension, true) << blockingActive;
    }

    void onlyAConfigurationThatNamesOurExtensionExists()
    {
        QFETCH(FilterConfiguration, saved);
        QFETCH(QString, state);
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.finishPass();
        (void)house.log.take();
        house.filter.saved = saved;
        house.controller->refresh();
        (void)house.log.take();
        house.filter.releaseLoad();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ state }));
    }

    // The repair

    void aDisabledConfigurationIsSwitchedOnWhenFocusIsWanted()
    {
        House house;
        house.filter.saved = savedFor(extension, false);
        house.start();
        house.controller->setBlockedDomains({ u"a.example"_s });
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        house.extensions.find({ { true } });
        (void)house.log.take();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ needsActivation, ready, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save enabled [a.example]"_s, blockingActive, u"status Website protection active"_s }));
    }

    void nothingIsRepairedWhereNoConfigurationOfOursExists()
    {
        House house;
        house.filter.saved = savedFor(u"com.example.Filter"_s, false);
        house.start();
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        house.extensions.find({ { true } });
        (void)house.log.take();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ needsActivation, ready }));
    }

    void nothingIsRepairedBeforeTheConfigurationIsKnown()
    {
        House house;
        house.filter.saved = savedFor(extension, false);
        house.start();
        house.controller->setFocusActive(true);
        house.extensions.find({ { true } });
        house.filter.releaseLoad();
        (void)house.log.take();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ ready, ready }));
    }

    void nothingIsRepairedWithoutFocusOrWhenItIsEnabledOrNotInstalled()
    {
        for (const auto& [focus, enabled, installed] :
            { std::tuple(false, false, true), std::tuple(true, true, true), std::tuple(true, false, false) }) {
            House house;
            house.filter.saved = savedFor(extension, enabled);
            house.start();
            house.controller->setFocusActive(focus);
            house.filter.releaseLoad();
            house.extensions.find({ { installed } });
            (void)house.log.take();
            House::mainThread();
            QVERIFY(!house.log.take().contains(filterLoad));
        }
    }

    // Activation

    void outsideApplicationsActivationIsRefusedWithoutARequest()
    {
        House house;
        house.startWith(false);
        house.extensions.bundlePath = u"/home/ada/build/bin/orvanta-focus"_s;
        house.controller->activate();
        QCOMPARE(house.log.take(), QStringList({ u"status Install Orvanta Focus in Applications first"_s }));
        QCOMPARE(house.extensions.pendingActivations(), std::size_t(0));
    }

    void activationIsAnnouncedThenRequested()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        QCOMPARE(house.log.take(), QStringList({ u"status Requesting website protection"_s, askedActivation }));
    }

    void anInstalledVersionIsAlwaysReplaced()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        QVERIFY(house.extensions.replace() == ReplacementAction::replace);
        QCOMPARE(static_cast<int>(ReplacementAction::replace), 1);
    }

    void neededApprovalIsSaidAndOpensNoSettings()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        (void)house.log.take();
        house.extensions.askForApproval();
        QCOMPARE(house.log.take(), QStringList());
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status Approve website protection in System Settings"_s }));
        QVERIFY(house.opener.opened.isEmpty());
    }

    void aFinishedActivationConfiguresThenRefreshes()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        (void)house.log.take();
        house.extensions.finish(ActivationResult::completed);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status Website protection installed"_s, filterLoad, askedProperties, filterLoad }));
        house.filter.releaseLoad();
        house.filter.releaseLoad();
        house.filter.releaseSave();
        house.extensions.find({ { true } });
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled []"_s, ready, ready, u"status Website protection ready"_s, ready }));
    }

    void anActivationThatCompletesAfterRebootStillInstallsAndConfigures()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        (void)house.log.take();
        house.extensions.finish(ActivationResult::willCompleteAfterReboot);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status Website protection installs after restart"_s, filterLoad, askedProperties, filterLoad }));
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ ready }));
        QCOMPARE(static_cast<int>(ActivationResult::willCompleteAfterReboot), 1);
    }

    void aFailedActivationIsReportedAndChangesNothing()
    {
        House house;
        house.startWith(false);
        house.controller->activate();
        (void)house.log.take();
        house.extensions.failActivation(u"The user said no"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status The user said no"_s }));
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ needsActivation }));
    }

    // Before the extension is installed

    void wishesBeforeTheExtensionIsInstalledWriteNothing()
    {
        House house;
        house.startWith(false);
        house.controller->setBlockedDomains({ u"a.example"_s });
        QCOMPARE(house.log.take(), QStringList());
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ needsActivation }));
        QVERIFY(house.filter.attempts().empty());
    }

    void theLastWishesOfTheTimeThatItWasAwayAreWrittenOnceWhenItIsBack_data()
    {
        QTest::addColumn<std::function<void(NetworkProtectionController&)>>("wish");
        QTest::addColumn<QString>("save");
        const auto row = [](const char* name, const std::function<void(NetworkProtectionController&)>& wish, const char* save) {
            QTest::newRow(name) << wish << QString::fromLatin1(save);
        };
        row("focus ended", [](auto& controller) { controller.setFocusActive(false); }, "filter.save disabled [a.example]");
        row("the list changed", [](auto& controller) { controller.setBlockedDomains({ u"b.example"_s }); }, "filter.save enabled [b.example]");
        row(
            "focus ended and began",
            [](auto& controller) {
                controller.setFocusActive(false);
                controller.setFocusActive(true);
            },
            "filter.save enabled [a.example]");
        row(
            "all of it",
            [](auto& controller) {
                controller.setBlockedDomains({ u"b.example"_s });
                controller.setFocusActive(false);
                controller.setBlockedDomains({ u"c.example"_s });
            },
            "filter.save disabled [c.example]");
    }

    void theLastWishesOfTheTimeThatItWasAwayAreWrittenOnceWhenItIsBack()
    {
        QFETCH(std::function<void(NetworkProtectionController&)>, wish);
        QFETCH(QString, save);
        House house;
        house.startWith(true);
        house.controller->setBlockedDomains({ u"a.example"_s });
        house.finishPass();
        house.controller->setFocusActive(true);
        house.finishPass();
        house.refreshTo(false);
        wish(*house.controller);
        QVERIFY(!house.log.take().contains(filterLoad));

        house.controller->refresh();
        (void)house.log.take();
        house.extensions.find({ { true } });
        House::mainThread();
        QCOMPARE(house.log.take().mid(1), QStringList({ filterLoad })); // after the state
        house.filter.releaseLoad();                                     // the refresh's own
        house.finishPass();
        QCOMPARE(house.log.take().filter(u"filter."_s), QStringList({ save }));

        house.refreshTo(true);
        house.refreshTo(false);
        house.refreshTo(true);
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
        QCOMPARE(house.filter.attempts().size(), std::size_t(3));
    }

    void whatWasMissedIsWrittenOnceAlsoWhenTheUserActivatesItAgain()
    {
        House house;
        house.startWith(true);
        house.refreshTo(false);
        house.controller->setFocusActive(true);
        house.controller->activate();
        house.extensions.finish(ActivationResult::completed);
        House::mainThread();
        house.finishPass(); // its load is the oldest; the refresh's own is still to come
        house.filter.releaseLoad();
        house.extensions.find({ { true } });
        House::mainThread();
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
        QCOMPARE(house.filter.attempts().size(), std::size_t(1));
        QVERIFY(house.filter.saved.isEnabled);
    }

    void whatWasWishedBeforeItWasEverThereIsNotWrittenWhenItIsFound()
    {
        House house;
        house.filter.saved = savedFor(extension, true);
        house.startWith(false);
        house.controller->setBlockedDomains({ u"a.example"_s });
        house.controller->setFocusActive(false);
        house.refreshTo(true);
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
        QVERIFY(house.filter.attempts().empty());
    }

    void theLatestListIsWrittenOnceActivationSucceeds()
    {
        House house;
        house.startWith(false);
        house.controller->setBlockedDomains({ u"old.example"_s });
        house.controller->activate();
        house.controller->setBlockedDomains({ u"b.example"_s, u"a.example"_s });
        house.extensions.finish(ActivationResult::completed);
        House::mainThread();
        house.filter.releaseLoad();
        house.filter.releaseSave();
        QCOMPARE(house.filter.attempts().size(), std::size_t(1));
        QCOMPARE(house.filter.saved.providerConfiguration->vendorConfiguration,
            QVariantMap({ { u"blockedDomains"_s, QStringList({ u"b.example"_s, u"a.example"_s }) } }));
    }

    // What a pass writes

    void aPassWritesEverySettingAndKeepsTheOthers()
    {
        House house;
        FilterProviderConfiguration theirs;
        theirs.filterDataProviderBundleIdentifier = u"com.example.Filter"_s;
        theirs.vendorConfiguration = { { u"blockedDomains"_s, QStringList({ u"old.example"_s }) }, { u"theirs"_s, 1 } };
        theirs.otherFields = { { u"filterPackets"_s, true }, { u"organization"_s, u"Example"_s } };
        house.filter.saved
            = { .providerConfiguration = theirs, .localizedDescription = u"Theirs"_s, .grade = FilterGrade::inspector, .isEnabled = false };
        house.startWith(true);
        house.controller->setBlockedDomains({ u"b.example"_s, u"a.example"_s });
        house.finishPass();
        house.controller->setFocusActive(true);
        house.finishPass();
        FilterProviderConfiguration ours;
        ours.filterSockets = true;
        ours.filterDataProviderBundleIdentifier = extension;
        ours.vendorConfiguration = { { u"blockedDomains"_s, QStringList({ u"b.example"_s, u"a.example"_s }) } };
        ours.otherFields = theirs.otherFields;
        QVERIFY(house.filter.saved
            == (FilterConfiguration { .providerConfiguration = ours,
                .localizedDescription = u"Orvanta Focus website protection"_s,
                .grade = FilterGrade::firewall,
                .isEnabled = true }));
        QCOMPARE(static_cast<int>(FilterGrade::firewall), 1);
    }

    void anEmptyListIsWrittenAsAnEmptyArray()
    {
        House house;
        house.startWith(true);
        house.controller->setBlockedDomains({});
        house.finishPass();
        const QVariantMap vendor = house.filter.saved.providerConfiguration->vendorConfiguration;
        QCOMPARE(vendor.keys(), QStringList({ u"blockedDomains"_s }));
        QCOMPARE(vendor.first(), QVariant(QStringList()));
    }

    void aConfigurationOfAnotherProviderIsTakenOver()
    {
        House house;
        house.filter.saved = savedFor(u"com.example.Filter"_s, true);
        house.startWith(true);
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ ready, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take().mid(1), QStringList({ blockingActive, u"status Website protection active"_s }));
        QCOMPARE(house.filter.saved.providerConfiguration->filterDataProviderBundleIdentifier, std::optional(extension));
    }

    void aPassWritesTheListAndTheFocusThatItBeganWith()
    {
        House house;
        house.startWith(true);
        house.controller->setBlockedDomains({ u"first.example"_s });
        house.controller->setFocusActive(true);
        house.controller->setBlockedDomains({ u"second.example"_s });
        house.filter.releaseLoad();
        QCOMPARE(house.log.take(), QStringList({ filterLoad, ready, u"filter.save disabled [first.example]"_s }));
        house.filter.releaseSave();
        House::mainThread();
        house.filter.releaseLoad();
        QCOMPARE(
            house.log.take(), QStringList({ ready, u"status Website protection ready"_s, filterLoad, u"filter.save enabled [second.example]"_s }));
    }

    // Focus and lists

    void focusIsReportedFirstThenConfigured()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ ready, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save enabled []"_s, blockingActive, u"status Website protection active"_s }));
        house.controller->setFocusActive(false);
        QCOMPARE(house.log.take(), QStringList({ ready, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled []"_s, ready, u"status Website protection ready"_s }));
    }

    void anEqualListIsSavedAgainAndNoStateIsReported()
    {
        House house;
        house.startWith(true);
        for (int push = 0; push < 2; ++push) {
            house.controller->setBlockedDomains({ u"a.example"_s });
            QCOMPARE(house.log.take(), QStringList({ filterLoad }));
            house.finishPass();
            QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled [a.example]"_s, ready, u"status Website protection ready"_s }));
        }
    }

    void threeChangesDuringAPassBecomeOneFurtherPassWithTheLastValue()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        (void)house.log.take();
        for (const bool active : { false, true, false })
            house.controller->setFocusActive(active);
        QCOMPARE(house.log.take(), QStringList({ ready, ready, ready }));
        house.filter.releaseSave();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ ready, u"status Website protection active"_s, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take(), QStringList({ u"filter.save disabled []"_s, ready, u"status Website protection ready"_s }));
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
        QCOMPARE(house.filter.attempts().size(), std::size_t(2));
    }

    // Failures

    void aFailedLoadInAPassIsReportedWithoutAState()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        (void)house.log.take();
        house.filter.failLoad(u"Not readable"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status Not readable"_s }));
        house.controller->setFocusActive(true);
        QCOMPARE(house.log.take(), QStringList({ ready, filterLoad }));
    }

    void aFailedLoadStillRunsThePendingPass()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.controller->setFocusActive(false);
        (void)house.log.take();
        house.filter.failLoad(u"Not readable"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ u"status Not readable"_s, filterLoad }));
        house.finishPass();
        QCOMPARE(house.log.take().front(), u"filter.save disabled []"_s);
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
    }

    void aFailedSaveReportsTheStateAsItWasThenTheError()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        (void)house.log.take();
        house.filter.failSave(u"Not permitted"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ ready, u"status Not permitted"_s }));
    }

    void aFailedSaveStillRunsThePendingPass()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        house.controller->setBlockedDomains({ u"a.example"_s });
        (void)house.log.take();
        house.filter.failSave(u"Not permitted"_s);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList({ ready, u"status Not permitted"_s, filterLoad }));
    }

    void aFailureIsNotTriedAgain()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.filter.releaseLoad();
        house.filter.failSave(u"Not permitted"_s);
        House::mainThread();
        QCOMPARE(house.filter.pendingLoads(), std::size_t(0));
        QCOMPARE(house.filter.attempts().size(), std::size_t(1));
    }

    // Threads and lives

    void answersFromAnotherThreadReachTheCallbacksOnTheMainOne()
    {
        House house;
        house.startWith(true);
        QThread* reported = nullptr;
        house.controller->onStatusChange = [&](const QString&) { reported = QThread::currentThread(); };
        house.controller->setFocusActive(true);
        std::jthread([&house] {
            house.filter.releaseLoad();
            house.filter.releaseSave();
        }).join();
        QVERIFY(!reported);
        QCOMPARE(house.filter.saved.isEnabled, true); // the pass itself goes on where its answers come
        House::mainThread();
        QCOMPARE(reported, QCoreApplication::instance()->thread());
    }

    void whatIsAnsweredAfterTheControllerIsGoneLeavesNothingBehind()
    {
        House house;
        house.start();
        house.controller->activate();
        house.extensions.find({ { true } });
        house.controller.reset();
        (void)house.log.take();
        house.filter.releaseLoad();
        house.extensions.askForApproval();
        house.extensions.finish(ActivationResult::completed);
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList());
    }

    void aPassWhoseControllerIsGoneSavesNothing()
    {
        House house;
        house.startWith(true);
        house.controller->setFocusActive(true);
        house.controller.reset();
        (void)house.log.take();
        house.filter.releaseLoad();
        House::mainThread();
        QCOMPARE(house.log.take(), QStringList());
    }

    void aControllerWithoutCallbacksWorks()
    {
        House house;
        house.startWith(true);
        house.controller->onStatusChange = nullptr;
        house.controller->onStateChange = nullptr;
        house.controller->setFocusActive(true);
        house.finishPass();
        QVERIFY(house.filter.saved.isEnabled);
    }
};

QTEST_GUILESS_MAIN(TestNetworkProtectionController)
#include "test_network_protection_controller.moc"
