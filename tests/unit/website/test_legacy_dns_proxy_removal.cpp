#include "website/legacy_dns_proxy_removal.h"

#include "support/fake_dns_proxy_manager.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

DnsProxyConfiguration savedBy(const std::optional<QString>& identifier)
{
    return { .providerProtocol = DnsProxyProviderProtocol { identifier } };
}

} // namespace

class TestLegacyDNSProxyRemoval : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void ourOldConfigurationIsRemoved()
    {
        CallLog log;
        FakeDnsProxyManager manager(log);
        manager.saved = savedBy(u"com.orvanta.focus.OrvantaFocusDNSProxy"_s);
        LegacyDNSProxyRemoval::run(manager);
        QCOMPARE(log.take(), QStringList({ u"dnsProxy.load"_s }));
        manager.releaseLoad();
        QCOMPARE(log.take(), QStringList({ u"dnsProxy.remove"_s }));
        manager.releaseRemoval();
        QCOMPARE(log.take(), QStringList());
        QVERIFY(manager.saved == DnsProxyConfiguration());
    }

    void anythingElseIsLeftUntouched_data()
    {
        QTest::addColumn<DnsProxyConfiguration>("saved");
        QTest::newRow("nothing saved") << DnsProxyConfiguration();
        QTest::newRow("a provider without identifier") << savedBy(std::nullopt);
        QTest::newRow("another provider") << savedBy(u"com.example.Proxy"_s);
        QTest::newRow("another case") << savedBy(u"com.orvanta.focus.orvantafocusdnsproxy"_s);
        QTest::newRow("a longer name") << savedBy(u"com.orvanta.focus.OrvantaFocusDNSProxy2"_s);
    }

    void anythingElseIsLeftUntouched()
    {
        QFETCH(DnsProxyConfiguration, saved);
        CallLog log;
        FakeDnsProxyManager manager(log);
        manager.saved = saved;
        LegacyDNSProxyRemoval::run(manager);
        manager.releaseLoad();
        QCOMPARE(log.take(), QStringList({ u"dnsProxy.load"_s }));
        QVERIFY(manager.saved == saved);
    }

    void whatCannotBeLoadedIsLeftAlone()
    {
        CallLog log;
        FakeDnsProxyManager manager(log);
        LegacyDNSProxyRemoval::run(manager);
        manager.failLoad(u"No such service"_s);
        QCOMPARE(log.take(), QStringList({ u"dnsProxy.load"_s }));
    }

    void aFailedRemovalIsNotTriedAgain()
    {
        CallLog log;
        FakeDnsProxyManager manager(log);
        manager.saved = savedBy(u"com.orvanta.focus.OrvantaFocusDNSProxy"_s);
        LegacyDNSProxyRemoval::run(manager);
        manager.releaseLoad();
        manager.failRemoval(u"Not permitted"_s);
        QCOMPARE(log.take(), QStringList({ u"dnsProxy.load"_s, u"dnsProxy.remove"_s }));
    }
};

QTEST_GUILESS_MAIN(TestLegacyDNSProxyRemoval)
#include "test_legacy_dns_proxy_removal.moc"
