#include "localservice/policy_store.h"
#include "scratch_database.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::localservice;
using namespace Qt::StringLiterals;
using Action = PolicyMutation::Action;

class TestPolicyStore : public QObject {
    Q_OBJECT

private:
    static Policy apply(PolicyStore& store, Action action, const QString& value)
    {
        return store.apply(acceptedMutation({ action, value }).value()).value();
    }

private Q_SLOTS:
    void aNewPolicyIsEmpty()
    {
        ScratchDatabase scratch;
        const Policy policy = PolicyStore(scratch.database()).policy().value();
        QCOMPARE(policy.revision, 1);
        QVERIFY(policy.blockedDomains.isEmpty());
        QVERIFY(policy.blockedApplications.empty());
    }

    void theRevisionGrowsWithEachRealChangeAlone()
    {
        ScratchDatabase scratch;
        PolicyStore store(scratch.database());
        QCOMPARE(apply(store, Action::addDomain, u" HTTPS://Example.com/path "_s).revision, 2);
        QCOMPARE(apply(store, Action::addDomain, u"example.com"_s).revision, 2);
        QCOMPARE(apply(store, Action::removeDomain, u"absent.example"_s).revision, 2);
        QCOMPARE(apply(store, Action::addApplication, u"org.example.Game"_s).revision, 3);
        QCOMPARE(apply(store, Action::addApplication, u"org.example.Game"_s).revision, 3);
        QCOMPARE(apply(store, Action::removeApplication, u"org.example.Absent"_s).revision, 3);
        QCOMPARE(apply(store, Action::removeApplication, u"org.example.Game"_s).revision, 4);
        QCOMPARE(apply(store, Action::removeDomain, u"http://EXAMPLE.com"_s).revision, 5);
        QVERIFY(store.policy().value().blockedDomains.isEmpty());
        QCOMPARE(store.revision().value(), 5);
    }

    void domainsStandInTheOrderOfCodePoints()
    {
        ScratchDatabase scratch;
        PolicyStore store(scratch.database());
        for (const QString& domain : { u"\U0001F600.x"_s, u"b.x"_s, u"\uFF5E.x"_s, u"a.x"_s })
            apply(store, Action::addDomain, domain);
        QCOMPARE(store.policy().value().blockedDomains, QStringList({ u"a.x"_s, u"b.x"_s, u"\uFF5E.x"_s, u"\U0001F600.x"_s }));
    }

    void applicationsAreShownUnderTheirIdentifierInTheOrderOfLists()
    {
        ScratchDatabase scratch;
        PolicyStore store(scratch.database());
        apply(store, Action::addApplication, u"org.b"_s);
        apply(store, Action::addApplication, u" org.C "_s);
        const Policy policy = apply(store, Action::addApplication, u"org.A"_s);
        const std::vector<BlockedApplication> expected { { u"org.A"_s, u"org.A"_s }, { u"org.b"_s, u"org.b"_s }, { u"org.C"_s, u"org.C"_s } };
        QCOMPARE(policy.blockedApplications, expected);
    }

    void valuesThatCannotBeBlockedAreRefused()
    {
        QVERIFY(!acceptedMutation({ Action::addDomain, u"localhost"_s }));
        QVERIFY(!acceptedMutation({ Action::removeDomain, u""_s }));
        QVERIFY(!acceptedMutation({ Action::addApplication, u"nodot"_s }));
        QVERIFY(!acceptedMutation({ Action::removeApplication, u"  "_s }));
    }

    void actionsHaveFourNames()
    {
        QVERIFY(policyAction(u"add_domain"_s) == Action::addDomain);
        QVERIFY(policyAction(u"remove_domain"_s) == Action::removeDomain);
        QVERIFY(policyAction(u"add_application"_s) == Action::addApplication);
        QVERIFY(policyAction(u"remove_application"_s) == Action::removeApplication);
        QVERIFY(!policyAction(u"Add_Domain"_s));
        QVERIFY(!policyAction(u""_s));
    }
};

QTEST_GUILESS_MAIN(TestPolicyStore)
#include "test_policy_store.moc"
