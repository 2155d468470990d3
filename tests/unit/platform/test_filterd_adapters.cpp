// On the real daemon, bus and polkit: tests/system/filter_adapters_test.py runs it there, and does what takes more rights.

#include "platform/linux/filterd_connection.h"
#include "platform/linux/filterd_dns_proxy_manager.h"
#include "platform/linux/filterd_extension_manager.h"
#include "platform/linux/filterd_filter_manager.h"
#include "platform/linux/filterd_notifications.h"
#include "support/contracts/dns_proxy_manager_contract.h"
#include "support/contracts/extension_manager_contract.h"
#include "support/contracts/filter_manager_contract.h"
#include "support/contracts/system_notifications_contract.h"

#include <QCoreApplication>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// Has `order` carried out by whoever has the rights for it. Done when this returns.
void have(const QByteArray& order)
{
    const int hands = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, qgetenv("ORVANTA_HANDS").constData(), sizeof address.sun_path);
    QByteArray answer;
    if (connect(hands, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        const QByteArray line = order + '\n';
        char part = 0;
        if (write(hands, line.constData(), static_cast<std::size_t>(line.size())) == line.size())
            while (read(hands, &part, 1) == 1 && part != '\n')
                answer += part;
    }
    close(hands);
    if (answer != "done")
        qFatal("%s: %s", order.constData(), answer.constData());
}

} // namespace

class TestFilterdExtensionManager : public ExtensionManagerContract {
    Q_OBJECT

    std::unique_ptr<ExtensionManager> makeManager() override { return std::make_unique<FilterdExtensionManager>(); }
    void prepare(Approval approval) override
    {
        have("fresh");
        have(approval == Approval::granted ? "approval granted" : approval == Approval::asked ? "approval asked" : "approval denied");
    }

private Q_SLOTS:
    void deniedItSaysWhatTheDaemonSays()
    {
        prepare(Approval::denied);
        FilterdExtensionManager manager;
        Answers<QString> errors;
        manager.activate(Filterd::service,
            { .replacing = {},
                .needsUserApproval = [] {},
                .finished = [](ActivationResult) {},
                .failed = [take = errors.take()](const PlatformError& error) { take(error.description); } });
        QVERIFY(comesTrue([] {}, [&] { return errors.count() == 1; }));
        QCOMPARE(errors.all().front(), u"Website protection was not approved"_s);
    }
};

class TestFilterdFilterManager : public FilterManagerContract {
    Q_OBJECT

    std::unique_ptr<FilterManager> makeManager() override { return std::make_unique<FilterdFilterManager>(); }
    void prepare() override
    {
        have("fresh");
        have("saving permitted");
    }
    void let(FilterManager&, Saving saving) override { have(saving == Saving::denied ? "saving denied" : "saving permitted"); }
};

class TestFilterdDnsProxyManager : public DnsProxyManagerContract {
    Q_OBJECT

    std::unique_ptr<DnsProxyManager> makeManager() override { return std::make_unique<FilterdDnsProxyManager>(); }
    void prepare(const QString& provider) override { have(("fresh " + provider.toUtf8()).trimmed()); }
};

class TestFilterdNotifications : public SystemNotificationsContract {
    Q_OBJECT

    std::unique_ptr<SystemNotifications> makeNotifications() override { return std::make_unique<FilterdNotifications>(); }
    void post(SystemNotifications&) override
    {
        // A burst is announced once, so that this one must not be part of the one before.
        constexpr int longerThanABurst = 1500;
        QTest::qWait(longerThanABurst);
        have("refuse");
    }

private Q_SLOTS:
    void thatTheDaemonCameOrWentIsDelivered()
    {
        FilterdNotifications notifications;
        int delivered = 0;
        const auto observer = notifications.observe(SystemNotifications::extensionChanged, [&] { ++delivered; });
        have("fresh");
        QVERIFY(comesTrue([] {}, [&] { return delivered > 0; }));
    }

    void whatOthersSendIsNotDelivered()
    {
        FilterdNotifications notifications;
        int delivered = 0;
        const auto observer = notifications.observe(name(), [&] { ++delivered; });
        have("others");
        post(notifications);
        QVERIFY(comesTrue([] {}, [&] { return delivered > 0; }));
        QCOMPARE(delivered, 1);
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestFilterdExtensionManager extensionManager;
    TestFilterdFilterManager filterManager;
    TestFilterdDnsProxyManager dnsProxyManager;
    TestFilterdNotifications notifications;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&extensionManager), static_cast<QObject*>(&filterManager), static_cast<QObject*>(&dnsProxyManager),
             static_cast<QObject*>(&notifications) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_filterd_adapters.moc"
