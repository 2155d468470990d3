#include "support/contracts/dns_proxy_manager_contract.h"
#include "support/contracts/extension_manager_contract.h"
#include "support/contracts/filter_manager_contract.h"
#include "support/contracts/system_notifications_contract.h"
#include "support/contracts/url_opener_contract.h"
#include "support/fake_dns_proxy_manager.h"
#include "support/fake_extension_manager.h"
#include "support/fake_filter_manager.h"
#include "support/fake_system_notifications.h"
#include "support/fake_url_opener.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;

/// The double answers when it is told to; here it is told what a system would have made of the requests.
class TestFakeExtensionManager : public ExtensionManagerContract {
    Q_OBJECT

    std::unique_ptr<ExtensionManager> makeManager() override
    {
        m_log.take(); // what another one was asked goes with it
        return std::make_unique<FakeExtensionManager>(m_log);
    }
    void prepare(Approval approval) override
    {
        m_log.take();
        m_approval = approval;
        m_isEnabled = false;
    }
    void settle(ExtensionManager& manager) override
    {
        auto& fake = static_cast<FakeExtensionManager&>(manager);
        const QStringList requests = m_log.take();
        for (const QString& request : requests) {
            if (request.startsWith(QStringLiteral("extension.requestProperties")))
                fake.find(request.endsWith(QStringLiteral("OrvantaFocusDNSProxy")) ? std::vector { ExtensionProperties { m_isEnabled } }
                                                                                   : std::vector<ExtensionProperties>());
            else
                conclude(fake);
        }
    }
    void conclude(FakeExtensionManager& fake)
    {
        if (m_approval == Approval::denied) {
            fake.failActivation(QStringLiteral("Nobody approved it."));
            return;
        }
        if (m_approval == Approval::asked)
            fake.askForApproval();
        m_isEnabled = true;
        fake.finish(ActivationResult::completed);
    }

    CallLog m_log;
    Approval m_approval = Approval::granted;
    bool m_isEnabled = false;
};

class TestFakeFilterManager : public FilterManagerContract {
    Q_OBJECT

    class Manager : public FakeFilterManager {
    public:
        Manager(CallLog& log, const FilterConfiguration& system) : FakeFilterManager(log) { saved = system; }

        bool isDenied = false;
    };

    std::unique_ptr<FilterManager> makeManager() override
    {
        m_log.take(); // what another one was asked goes with it
        return std::make_unique<Manager>(m_log, m_system);
    }
    void prepare() override
    {
        m_log.take();
        m_system = {};
    }
    void let(FilterManager& manager, Saving saving) override { static_cast<Manager&>(manager).isDenied = saving == Saving::denied; }
    void settle(FilterManager& manager) override
    {
        auto& fake = static_cast<Manager&>(manager);
        const QStringList requests = m_log.take();
        for (const QString& request : requests) {
            if (request == QStringLiteral("filter.load"))
                fake.releaseLoad();
            else if (fake.isDenied)
                fake.failSave(QStringLiteral("That is not permitted."));
            else
                fake.releaseSave();
            m_system = fake.saved;
        }
    }

    CallLog m_log;
    FilterConfiguration m_system; ///< outlives the managers
};

class TestFakeDnsProxyManager : public DnsProxyManagerContract {
    Q_OBJECT

    std::unique_ptr<DnsProxyManager> makeManager() override
    {
        m_log.take(); // what another one was asked goes with it
        auto manager = std::make_unique<FakeDnsProxyManager>(m_log);
        manager->saved = m_system;
        return manager;
    }
    void prepare(const QString& provider) override
    {
        m_log.take();
        m_system = {};
        if (!provider.isEmpty())
            m_system.providerProtocol = DnsProxyProviderProtocol { provider };
    }
    void settle(DnsProxyManager& manager) override
    {
        auto& fake = static_cast<FakeDnsProxyManager&>(manager);
        const QStringList requests = m_log.take();
        for (const QString& request : requests) {
            if (request == QStringLiteral("dnsProxy.load"))
                fake.releaseLoad();
            else
                fake.releaseRemoval();
            m_system = fake.saved;
        }
    }

    CallLog m_log;
    DnsProxyConfiguration m_system;
};

class TestFakeSystemNotifications : public SystemNotificationsContract {
    Q_OBJECT

    std::unique_ptr<SystemNotifications> makeNotifications() override { return std::make_unique<FakeSystemNotifications>(m_log); }
    void post(SystemNotifications& notifications) override { static_cast<FakeSystemNotifications&>(notifications).post(name()); }

    CallLog m_log;
};

class TestFakeUrlOpener : public UrlOpenerContract {
    Q_OBJECT

    std::unique_ptr<UrlOpener> makeOpener() override { return std::make_unique<FakeUrlOpener>(); }
    static bool isPage(const QUrl& url) { return url.scheme().startsWith(QStringLiteral("http")); }
    QStringList pages(UrlOpener& opener) override
    {
        QStringList pages;
        for (const QUrl& url : static_cast<FakeUrlOpener&>(opener).opened)
            if (isPage(url))
                pages << url.toString(QUrl::FullyEncoded);
        return pages;
    }
    int settings(UrlOpener& opener) override
    {
        const auto& opened = static_cast<FakeUrlOpener&>(opener).opened;
        return static_cast<int>(std::ranges::count_if(opened, [](const QUrl& url) { return !isPage(url); }));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestFakeExtensionManager extensionManager;
    TestFakeFilterManager filterManager;
    TestFakeDnsProxyManager dnsProxyManager;
    TestFakeSystemNotifications systemNotifications;
    TestFakeUrlOpener urlOpener;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&extensionManager), static_cast<QObject*>(&filterManager), static_cast<QObject*>(&dnsProxyManager),
             static_cast<QObject*>(&systemNotifications), static_cast<QObject*>(&urlOpener) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_website_doubles.moc"
