#include "macos/gnustep/fakes/fake_darwin_centre.h"
#include "macos/gnustep/fakes/fake_network_extension.h"
#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/fake_system_extensions.h"
#include "platform/macos/darwin_notifications.h"
#include "platform/macos/network_dns_proxy_manager.h"
#include "platform/macos/network_filter_manager.h"
#include "platform/macos/system_extension_manager.h"
#include "support/contracts/dns_proxy_manager_contract.h"
#include "support/contracts/extension_manager_contract.h"
#include "support/contracts/filter_manager_contract.h"
#include "support/contracts/system_notifications_contract.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QString extension = u"com.orvanta.focus.OrvantaFocusDNSProxy"_s;

/// Collects answers, which come on the main thread.
template <typename Answer>
auto into(std::vector<Answer>& answers)
{
    return [&answers](Answer answer) {
        QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
        answers.push_back(std::move(answer));
    };
}

FilterConfiguration wanted(bool isEnabled)
{
    return { .providerConfiguration = FilterProviderConfiguration { .filterSockets = true,
                 .filterDataProviderBundleIdentifier = extension,
                 .vendorConfiguration = { { u"blockedDomains"_s, QStringList { u"b.example"_s, u"a.example"_s } } } },
        .localizedDescription = u"Orvanta Focus website protection"_s,
        .grade = FilterGrade::firewall,
        .isEnabled = isEnabled };
}

} // namespace

class TestNetworkFilterManager : public FilterManagerContract {
    Q_OBJECT

    std::unique_ptr<FilterManager> makeManager() override { return std::make_unique<NetworkFilterManager>(); }
    void prepare() override { m_failure = std::nullopt; }
    void let(FilterManager& /*manager*/, Saving saving) override
    {
        m_failure = saving == Saving::denied ? std::optional(u"permission denied"_s) : std::nullopt;
    }
    void settle(FilterManager& /*manager*/) override { mac::settleFilter(m_failure); }

    std::optional<QString> m_failure;

    using Loads = std::vector<Result<FilterConfiguration>>;
    using Saves = std::vector<Result<void>>;

private Q_SLOTS:
    void init() { mac::begin(); }

    void theSettingsAreWrittenInThisOrderAndSaved()
    {
        NetworkFilterManager manager;
        Saves saves;
        manager.save(wanted(true), into(saves));
        QCOMPARE(mac::calls(),
            QStringList({ u"provider.filterSockets = YES"_s, u"provider.filterDataProviderBundleIdentifier = "_s + extension,
                u"provider.vendorConfiguration = blockedDomains"_s, u"providerConfiguration = one"_s,
                u"localizedDescription = Orvanta Focus website protection"_s, u"grade = 1"_s, u"enabled = YES"_s, u"saveToPreferences"_s }));
        mac::releaseFilterSave();
        QVERIFY(saves.empty());
        QTRY_COMPARE(saves.size(), std::size_t(1));
        QVERIFY(saves.front());
        const mac::SavedFilter saved = mac::savedFilter();
        QVERIFY(saved.hasProvider && saved.filterSockets && !saved.filterPackets && saved.isEnabled);
        QCOMPARE(saved.dataProvider, extension);
        QCOMPARE(saved.vendorKeys, QStringList({ u"blockedDomains"_s }));
        QCOMPARE(saved.blockedDomains, QStringList({ u"b.example"_s, u"a.example"_s }));
        QCOMPARE(saved.grade, 1);
    }

    void aSaveIsReadBackAsItWasWritten()
    {
        NetworkFilterManager manager;
        Saves saves;
        manager.save(wanted(false), into(saves));
        mac::releaseFilterSave();
        QTRY_COMPARE(saves.size(), std::size_t(1));
        Loads loads;
        manager.load(into(loads));
        QVERIFY(loads.empty());
        mac::releaseFilterLoad();
        QVERIFY(loads.empty());
        QTRY_COMPARE(loads.size(), std::size_t(1));
        QCOMPARE(loads.front(), Result<FilterConfiguration>(wanted(false)));
    }

    void anEmptyListIsWrittenAsAnEmptyList()
    {
        NetworkFilterManager manager;
        FilterConfiguration configuration = wanted(true);
        configuration.providerConfiguration->vendorConfiguration = { { u"blockedDomains"_s, QStringList() } };
        Saves saves;
        manager.save(configuration, into(saves));
        mac::releaseFilterSave();
        QTRY_COMPARE(saves.size(), std::size_t(1));
        QCOMPARE(mac::savedFilter().vendorKeys, QStringList({ u"blockedDomains"_s }));
        Loads loads;
        manager.load(into(loads));
        mac::releaseFilterLoad();
        QTRY_COMPARE(loads.size(), std::size_t(1));
        QCOMPARE(loads.front(), Result<FilterConfiguration>(configuration));
    }

    void withNothingSavedThereIsNoProvider()
    {
        NetworkFilterManager manager;
        Loads loads;
        manager.load(into(loads));
        mac::releaseFilterLoad();
        QTRY_COMPARE(loads.size(), std::size_t(1));
        QVERIFY(loads.front() && !loads.front()->providerConfiguration && !loads.front()->isEnabled);
    }

    void anExistingProviderIsChangedInPlace_data()
    {
        QTest::addColumn<bool>("copies");
        QTest::newRow("the manager hands out its own") << false;
        QTest::newRow("the manager hands out copies") << true;
    }

    void anExistingProviderIsChangedInPlace()
    {
        QFETCH(bool, copies);
        mac::saveForeignFilter(u"com.example.other"_s);
        if (copies)
            mac::copyWhatIsHandedOut();
        NetworkFilterManager manager;
        Loads loads;
        manager.load(into(loads));
        mac::releaseFilterLoad();
        QTRY_COMPARE(loads.size(), std::size_t(1));
        QCOMPARE(loads.front()->providerConfiguration->filterDataProviderBundleIdentifier, std::optional(u"com.example.other"_s));
        QCOMPARE(loads.front()->grade, FilterGrade::inspector);
        Saves saves;
        manager.save(wanted(true), into(saves));
        mac::releaseFilterSave();
        QTRY_COMPARE(saves.size(), std::size_t(1));
        const mac::SavedFilter saved = mac::savedFilter();
        QCOMPARE(saved.dataProvider, extension);
        QVERIFY(saved.filterSockets);
        QVERIFY(saved.filterPackets); // not ours to set
        QCOMPARE(saved.grade, 1);
    }

    void failuresAreToldInTheSystemsWords()
    {
        NetworkFilterManager manager;
        Loads loads;
        Saves saves;
        manager.load(into(loads));
        manager.save(wanted(true), into(saves));
        mac::failFilterLoad(u"permission denied"_s);
        mac::failFilterSave(u"configuration is stale"_s);
        QTRY_COMPARE(saves.size(), std::size_t(1));
        QCOMPARE(loads, Loads({ std::unexpected(PlatformError { u"permission denied"_s }) }));
        QCOMPARE(saves, Saves({ std::unexpected(PlatformError { u"configuration is stale"_s }) }));
        QVERIFY(!mac::savedFilter().hasProvider);
    }

    void aLoadMaySaveFromWithinItsAnswer()
    {
        NetworkFilterManager manager;
        Saves saves;
        manager.load([&](const Result<FilterConfiguration>& loaded) {
            QVERIFY(loaded);
            manager.save(wanted(true), into(saves));
        });
        mac::releaseFilterLoad();
        QTRY_COMPARE(mac::calls().constLast(), u"saveToPreferences"_s);
        mac::releaseFilterSave();
        QTRY_COMPARE(saves.size(), std::size_t(1));
    }

    void whatIsUnderWayToAManagerThatIsGoneIsDropped()
    {
        auto manager = std::make_unique<NetworkFilterManager>();
        Loads loads;
        Saves saves;
        manager->load(into(loads));
        manager->save(wanted(true), into(saves));
        mac::releaseFilterLoad();
        manager.reset();
        mac::releaseFilterSave();
        QCoreApplication::processEvents();
        QVERIFY(loads.empty() && saves.empty());
    }
};

class TestNetworkDnsProxyManager : public DnsProxyManagerContract {
    Q_OBJECT

    std::unique_ptr<DnsProxyManager> makeManager() override { return std::make_unique<NetworkDnsProxyManager>(); }
    void prepare(const QString& provider) override
    {
        mac::saveDnsProxy(provider.isEmpty() ? std::nullopt : std::optional(DnsProxyProviderProtocol { provider }));
    }
    void settle(DnsProxyManager& /*manager*/) override { mac::settleDnsProxy(); }

    using Loads = std::vector<Result<DnsProxyConfiguration>>;
    using Removals = std::vector<Result<void>>;

private Q_SLOTS:
    void init() { mac::begin(); }

    void whatIsSavedIsLoaded_data()
    {
        using Protocol = std::optional<DnsProxyProviderProtocol>;
        QTest::addColumn<std::optional<DnsProxyProviderProtocol>>("protocol");
        QTest::newRow("nothing") << Protocol();
        QTest::newRow("ours") << Protocol(DnsProxyProviderProtocol { extension });
        QTest::newRow("without identifier") << Protocol(DnsProxyProviderProtocol { std::nullopt });
    }

    void whatIsSavedIsLoaded()
    {
        QFETCH(std::optional<DnsProxyProviderProtocol>, protocol);
        mac::saveDnsProxy(protocol);
        NetworkDnsProxyManager manager;
        Loads loads;
        manager.load(into(loads));
        mac::releaseDnsLoad();
        QVERIFY(loads.empty());
        QTRY_COMPARE(loads, Loads({ DnsProxyConfiguration { protocol } }));
        QCOMPARE(mac::calls(), QStringList({ u"dns loadFromPreferences"_s }));
    }

    void removingRemovesAndNothingElse()
    {
        mac::saveDnsProxy(DnsProxyProviderProtocol { extension });
        NetworkDnsProxyManager manager;
        Removals removals;
        manager.load([&](const Result<DnsProxyConfiguration>&) { manager.remove(into(removals)); });
        mac::releaseDnsLoad();
        QTRY_COMPARE(mac::calls(), QStringList({ u"dns loadFromPreferences"_s, u"dns removeFromPreferences"_s }));
        mac::releaseDnsRemoval();
        QTRY_COMPARE(removals.size(), std::size_t(1));
        QVERIFY(removals.front());
        QVERIFY(!mac::isDnsProxySaved());
    }

    void failuresAreToldInTheSystemsWords()
    {
        NetworkDnsProxyManager manager;
        Loads loads;
        Removals removals;
        manager.load(into(loads));
        manager.remove(into(removals));
        mac::failDnsLoad(u"not now"_s);
        mac::failDnsRemoval(u"not ever"_s);
        QTRY_COMPARE(removals, Removals({ std::unexpected(PlatformError { u"not ever"_s }) }));
        QCOMPARE(loads, Loads({ std::unexpected(PlatformError { u"not now"_s }) }));
    }

    void whatIsUnderWayToAManagerThatIsGoneIsDropped()
    {
        auto manager = std::make_unique<NetworkDnsProxyManager>();
        Loads loads;
        Removals removals;
        manager->load(into(loads));
        manager->remove(into(removals));
        mac::releaseDnsLoad();
        manager.reset();
        mac::releaseDnsRemoval();
        QCoreApplication::processEvents();
        QVERIFY(loads.empty() && removals.empty());
    }
};

class TestSystemExtensionManager : public ExtensionManagerContract {
    Q_OBJECT

    std::unique_ptr<ExtensionManager> makeManager() override { return std::make_unique<SystemExtensionManager>(); }
    void prepare(Approval approval) override
    {
        m_approval = approval;
        m_isEnabled = false;
    }
    void settle(ExtensionManager& /*manager*/) override
    {
        while (!mac::oldestExtensionActivation().isEmpty())
            endActivation();
        while (!mac::oldestExtensionLookup().isEmpty())
            mac::findExtensions(mac::oldestExtensionLookup() == extension ? std::vector<ExtensionProperties> { { .isEnabled = m_isEnabled } }
                                                                          : std::vector<ExtensionProperties>());
    }

    void endActivation()
    {
        if (m_approval == Approval::denied) {
            mac::failExtensionActivation(u"The user did not allow the extension"_s);
            return;
        }
        if (m_approval == Approval::asked)
            mac::askForExtensionApproval();
        mac::finishExtensionActivation(0);
        m_isEnabled = true;
    }

    Approval m_approval = Approval::granted;
    bool m_isEnabled = false;

    struct Heard {
        int approvals = 0;
        std::vector<ActivationResult> finished;
        std::vector<PlatformError> failed;
        std::vector<std::vector<ExtensionProperties>> found;
    };

    static ActivationEvents eventsOf(Heard& heard, ReplacementAction replacement = ReplacementAction::replace)
    {
        return { .replacing = [replacement] { return replacement; },
            .needsUserApproval =
                [&heard] {
                    QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
                    ++heard.approvals;
                },
            .finished = into(heard.finished),
            .failed = into(heard.failed) };
    }

private Q_SLOTS:
    void init() { mac::begin(); }

    void requestsAreMadeOnTheMainQueueWithADelegateBeforeTheyAreSubmitted()
    {
        SystemExtensionManager manager;
        Heard heard;
        manager.requestProperties(extension, into(heard.found), into(heard.failed));
        manager.activate(extension, eventsOf(heard));
        QCOMPARE(mac::calls(),
            QStringList({ u"properties request for %1 on the main queue"_s.arg(extension), u"delegate set"_s, u"submitRequest"_s,
                u"activation request for %1 on the main queue"_s.arg(extension), u"delegate set"_s, u"submitRequest"_s }));
    }

    void propertiesAreFoundInTheirOrder_data()
    {
        QTest::addColumn<std::vector<bool>>("versions");
        QTest::newRow("none") << std::vector<bool>();
        QTest::newRow("one, enabled") << std::vector<bool> { true };
        QTest::newRow("an old and a new one") << std::vector<bool> { false, true };
    }

    void propertiesAreFoundInTheirOrder()
    {
        QFETCH(std::vector<bool>, versions);
        std::vector<ExtensionProperties> properties;
        for (const bool isEnabled : versions)
            properties.push_back({ .isEnabled = isEnabled });
        SystemExtensionManager manager;
        Heard heard;
        manager.requestProperties(extension, into(heard.found), into(heard.failed));
        mac::findExtensions(properties);
        QVERIFY(heard.found.empty());
        QTRY_COMPARE(heard.found, std::vector({ properties }));
        QCoreApplication::processEvents(); // the end of the request, which says nothing more
        QCOMPARE(heard.found.size(), std::size_t(1));
        QVERIFY(heard.failed.empty());
    }

    void anotherVersionIsReplacedOrNotAsIsSaid()
    {
        SystemExtensionManager manager;
        Heard heard;
        manager.activate(extension, eventsOf(heard));
        QCOMPARE(mac::askToReplaceExtension(), 1);
        mac::finishExtensionActivation(0);
        manager.activate(extension, eventsOf(heard, ReplacementAction::cancel));
        QCOMPARE(mac::askToReplaceExtension(), 0);
    }

    void anActivationGoesThroughApprovalToItsEnd_data()
    {
        QTest::addColumn<int>("raw");
        QTest::addColumn<ActivationResult>("result");
        QTest::newRow("completed") << 0 << ActivationResult::completed;
        QTest::newRow("after a restart") << 1 << ActivationResult::willCompleteAfterReboot;
    }

    void anActivationGoesThroughApprovalToItsEnd()
    {
        QFETCH(int, raw);
        QFETCH(ActivationResult, result);
        SystemExtensionManager manager;
        Heard heard;
        manager.activate(extension, eventsOf(heard));
        mac::askForExtensionApproval();
        QCOMPARE(heard.approvals, 0);
        QTRY_COMPARE(heard.approvals, 1);
        mac::finishExtensionActivation(raw);
        QVERIFY(heard.finished.empty());
        QTRY_COMPARE(heard.finished, std::vector({ result }));
        QVERIFY(heard.failed.empty());
    }

    void failuresAreToldInTheSystemsWords()
    {
        SystemExtensionManager manager;
        Heard heard;
        manager.activate(extension, eventsOf(heard));
        manager.requestProperties(extension, into(heard.found), into(heard.failed));
        mac::failExtensionActivation(u"extension not found"_s);
        mac::failExtensionProperties(u"no entitlement"_s);
        QTRY_COMPARE(heard.failed, std::vector({ PlatformError { u"extension not found"_s }, PlatformError { u"no entitlement"_s } }));
        QVERIFY(heard.finished.empty() && heard.found.empty());
    }

    void eachRequestHasItsOwnAnswer()
    {
        SystemExtensionManager manager;
        Heard first;
        Heard second;
        manager.requestProperties(extension, into(first.found), into(first.failed));
        manager.requestProperties(extension, into(second.found), into(second.failed));
        mac::findExtensions({ { .isEnabled = true } });
        QTRY_COMPARE(first.found.size(), std::size_t(1));
        QVERIFY(second.found.empty());
        mac::findExtensions({});
        QTRY_COMPARE(second.found.size(), std::size_t(1));
    }

    void whatIsUnderWayToAManagerThatIsGoneIsDropped()
    {
        auto manager = std::make_unique<SystemExtensionManager>();
        Heard heard;
        manager->activate(extension, eventsOf(heard));
        mac::askForExtensionApproval();
        mac::finishExtensionActivation(0);
        manager.reset();
        QCoreApplication::processEvents();
        QVERIFY(heard.approvals == 0 && heard.finished.empty());
    }

    void theHostIsTheMainBundle()
    {
        const QString path = SystemExtensionManager().hostBundlePath();
        QVERIFY(path.startsWith(u'/') && path.endsWith("/test_macos_website"_L1));
    }
};

class TestDarwinNotifications : public SystemNotificationsContract {
    Q_OBJECT

    std::unique_ptr<SystemNotifications> makeNotifications() override { return std::make_unique<DarwinNotifications>(); }
    void post(SystemNotifications& /*notifications*/) override { mac::postDarwinNotification(name()); }

    const QString m_name = u"com.orvanta.focus.blocked-domain-attempt"_s;

private Q_SLOTS:
    void init() { mac::begin(); }

    void theNameIsRegisteredForImmediateDelivery()
    {
        DarwinNotifications notifications;
        auto observer = notifications.observe(m_name, [] { });
        QCOMPARE(mac::calls(), QStringList({ u"add observer of %1, object none, behaviour 4"_s.arg(m_name) }));
        observer = {};
        QCOMPARE(mac::calls().constLast(), u"remove every observer"_s);
        QCOMPARE(mac::darwinRegistrations(), 0);
    }

    void eachNotificationOfThatNameIsToldOnTheMainThread()
    {
        DarwinNotifications notifications;
        int told = 0;
        const auto observer = notifications.observe(m_name, [&] {
            QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
            ++told;
        });
        mac::postDarwinNotification(m_name + u"s"_s);
        mac::postDarwinNotification(m_name);
        mac::postDarwinNotification(m_name);
        QCOMPARE(told, 0);
        QTRY_COMPARE(told, 2);
    }

    void whatIsUnderWayWhenTheObservationEndsIsNotTold()
    {
        DarwinNotifications notifications;
        int told = 0;
        auto observer = notifications.observe(m_name, [&] { ++told; });
        mac::postDarwinNotification(m_name);
        observer = {};
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
    }

    void withTheCentreGoneNothingStaysRegistered()
    {
        auto notifications = std::make_unique<DarwinNotifications>();
        int told = 0;
        auto observer = notifications->observe(m_name, [&] { ++told; });
        const auto other = notifications->observe(m_name, [&] { ++told; });
        mac::postDarwinNotification(m_name);
        notifications.reset();
        QCOMPARE(mac::darwinRegistrations(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
        observer = {};
    }
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TestNetworkFilterManager filter;
    TestNetworkDnsProxyManager dnsProxy;
    TestSystemExtensionManager extensions;
    TestDarwinNotifications notifications;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &filter, &dnsProxy, &extensions, &notifications })
        failures += QTest::qExec(test, argc, argv);
    return failures;
}

#include "test_macos_website.moc"
