#include "filter/core/domain_table.h"
#include "filter/core/host_name.h"

#include <QElapsedTimer>
#include <QTest>

#include <random>
#include <unordered_set>

using namespace orvanta::filter;

namespace {

DomainTable tableOf(std::vector<std::string> entries)
{
    return DomainTable::build(entries);
}

std::string found(const DomainTable& table, std::string_view host)
{
    return std::string(table.entryCovering(host).value_or("none"));
}

} // namespace

class TestFilterHosts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEntryMeansTheHostThatTheUserHasInMind_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<QByteArray>("host");
        QTest::newRow("a domain") << QByteArray("example.com") << QByteArray("example.com");
        QTest::newRow("in capitals") << QByteArray("Example.COM") << QByteArray("example.com");
        QTest::newRow("with a port") << QByteArray("example.com:8080") << QByteArray("example.com");
        QTest::newRow("with a trailing dot") << QByteArray("example.com.") << QByteArray("example.com");
        QTest::newRow("with port and dot") << QByteArray("example.com.:443") << QByteArray("example.com");
        QTest::newRow("with a scheme") << QByteArray("ftp://example.com") << QByteArray("example.com");
        QTest::newRow("a whole address") << QByteArray("https://ada@example.com:8443/a.b?c#d") << QByteArray("example.com");
        QTest::newRow("with a query") << QByteArray("example.com?x=1") << QByteArray("example.com");
        QTest::newRow("with a wildcard") << QByteArray("*.example.com") << QByteArray("example.com");
        QTest::newRow("with a leading dot") << QByteArray(".example.com") << QByteArray("example.com");
        QTest::newRow("among blanks") << QByteArray(" \texample.com\n") << QByteArray("example.com");
        QTest::newRow("in another script") << QByteArray("b\xc3\xbc"
                                                         "cher.example")
                                           << QByteArray("xn--bcher-kva.example");
        QTest::newRow("as that travels") << QByteArray("xn--bcher-kva.example") << QByteArray("xn--bcher-kva.example");
        QTest::newRow("with a dot of another script") << QByteArray("\xe4\xbe\x8b\xe3\x80\x82"
                                                                    "example")
                                                      << QByteArray("xn--fsq.example");
        QTest::newRow("an address") << QByteArray("192.0.2.1") << QByteArray("192.0.2.1");
        QTest::newRow("one label") << QByteArray("com.") << QByteArray("none");
        QTest::newRow("a dot and one label") << QByteArray(".com") << QByteArray("none");
        QTest::newRow("a wildcard for everything") << QByteArray("*.") << QByteArray("none");
        QTest::newRow("dots alone") << QByteArray("...") << QByteArray("none");
        QTest::newRow("empty labels") << QByteArray("a..example") << QByteArray("none");
        QTest::newRow("a blank between wildcard and dot") << QByteArray("*.\n.*.*.*") << QByteArray("none");
        QTest::newRow("blanks inside") << QByteArray("not a.domain") << QByteArray("none");
        QTest::newRow("empty") << QByteArray("") << QByteArray("none");
        QTest::newRow("too long") << QByteArray(250, 'a') + ".com" << QByteArray("none");
    }

    void anEntryMeansTheHostThatTheUserHasInMind()
    {
        QFETCH(QByteArray, entry);
        QFETCH(QByteArray, host);
        QCOMPARE(QByteArray::fromStdString(hostOfEntry(entry.toStdString()).value_or("none")), host);
    }

    void anEntryOfAnySizeIsSurvived()
    {
        std::string dots;
        for (int dot = 0; dot < 500'000; ++dot)
            dots += "\u3002";
        QVERIFY(!hostOfEntry(dots));
        QVERIFY(!hostOfEntry(std::string(1'000'000, '.')));
        QVERIFY(!hostOfEntry("a.example/" + std::string(1'000'000, 'x')));
        QCOMPARE(hostOfEntry("a.example/" + std::string(2000, 'x')), "a.example");
    }

    void hostsAreComparedWithoutCasePortAndTrailingDots()
    {
        QVERIFY(comparableHost("WWW.Example.com.:443") == "www.example.com");
        QVERIFY(comparableHost("localhost") == "localhost");
        QVERIFY(comparableHost("[2001:db8::1]:443") == "[2001:db8::1]");
        QVERIFY(comparableHost("2001:db8::1") == "2001:db8::1");
        QVERIFY(!comparableHost(""));
        QVERIFY(!comparableHost("."));
        QVERIFY(!comparableHost("a b"));
        QVERIFY(!comparableHost(std::string_view("a\0b", 3)));
    }

    void anEntryCoversItsHostAndEverySubDomain()
    {
        const DomainTable table = tableOf({ "example.com", "news.example.org" });
        QCOMPARE(found(table, "example.com"), "example.com");
        QCOMPARE(found(table, "www.example.com"), "example.com");
        QCOMPARE(found(table, "a.b.c.example.com"), "example.com");
        QCOMPARE(found(table, "news.example.org"), "news.example.org");
    }

    void nothingElseIsCovered()
    {
        const DomainTable table = tableOf({ "example.com", "news.example.org" });
        for (const auto* host : { "com", "notexample.com", "example.com.evil.net", "example.co", "example.org", "xample.com", "", ".", "..", ".com" })
            QCOMPARE(found(table, host), "none");
    }

    void theMostSpecificEntryIsNamed()
    {
        const DomainTable table = tableOf({ "example.com", "mail.example.com" });
        QCOMPARE(found(table, "imap.mail.example.com"), "mail.example.com");
        QCOMPARE(found(table, "www.example.com"), "example.com");
    }

    void entriesOfTheSameMeaningAreOne() { QCOMPARE(tableOf({ "Example.com", "example.com.", "*.example.com", "junk" }).size(), std::size_t(1)); }

    void anEmptyTableCoversNothing()
    {
        QCOMPARE(found(DomainTable(), "example.com"), "none");
        QCOMPARE(found(tableOf({}), "example.com"), "none");
    }

    void aMillionDomainsAreAllFoundAndStrangersAreNot()
    {
        std::mt19937 random(1);
        std::unordered_set<std::string> wanted;
        while (wanted.size() < 1'000'000) {
            std::string name;
            for (auto length = 8 + random() % 9; name.size() < length;)
                name += static_cast<char>('a' + random() % 26);
            wanted.insert(name + (random() % 2 ? ".com" : ".org"));
        }
        const std::vector<std::string> entries(wanted.begin(), wanted.end());
        const DomainTable table = DomainTable::build(entries);
        QCOMPARE(table.size(), entries.size());
        std::size_t lost = 0;
        std::size_t strangers = 0;
        for (const std::string& entry : entries) {
            lost += table.entryCovering(entry) != entry;
            strangers += table.entryCovering("x" + entry).has_value() && !wanted.contains("x" + entry);
        }
        QCOMPARE(lost, std::size_t(0));
        QCOMPARE(strangers, std::size_t(0));
        const auto perEntry = static_cast<double>(table.memory()) / static_cast<double>(table.size());
        QVERIFY2(perEntry <= 32, qPrintable(QString::number(perEntry)));
    }
};

QTEST_GUILESS_MAIN(TestFilterHosts)
#include "test_filter_hosts.moc"
