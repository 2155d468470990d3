#include "settings/domain_entry.h"

#include <QSignalSpy>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestDomainEntry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aDomainOfOnlySpacesCannotBeSaved_data()
    {
        QTest::addColumn<QString>("domain");
        QTest::addColumn<bool>("canSave");
        QTest::newRow("nothing") << QString() << false;
        QTest::newRow("spaces") << u"   "_s << false;
        QTest::newRow("tabs and line breaks") << u"\t\n\r\n"_s << false;
        QTest::newRow("white space beyond ASCII") << u"\u00a0\u2003\u3000\u2028"_s << false;
        QTest::newRow("a domain") << u"news.example"_s << true;
        QTest::newRow("a domain among spaces") << u"  news.example "_s << true;
        QTest::newRow("what is no domain, which the model refuses later") << u"localhost"_s << true;
    }

    void aDomainOfOnlySpacesCannotBeSaved()
    {
        QFETCH(QString, domain);
        QFETCH(bool, canSave);
        DomainEntry entry;
        QVERIFY(!entry.canSave());
        entry.setDomain(domain);
        QCOMPARE(entry.canSave(), canSave);
        QCOMPARE(entry.domain(), domain); // as typed
    }

    void onlyAChangeIsAnnounced()
    {
        DomainEntry entry;
        QSignalSpy changed(&entry, &DomainEntry::domainChanged);
        entry.setDomain(u"a"_s);
        entry.setDomain(u"a"_s);
        QCOMPARE(changed.size(), 1);
    }
};

QTEST_APPLESS_MAIN(TestDomainEntry)
#include "test_domain_entry.moc"
