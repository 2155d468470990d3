#include "app/policy/blocked_domains.h"
#include "app/policy/policy_text.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestBlockedDomains : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void normalises_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expected"); // null: rejected

        QTest::newRow("scheme, case, path and blanks") << u"  HTTPS://Example.COM/Path  "_s << u"example.com"_s;
        QTest::newRow("no dot") << u"localhost"_s << QString();
        QTest::newRow("a single dot") << u"."_s << u"."_s;
        QTest::newRow("both schemes") << u"http://https://example.com"_s << u"example.com"_s;
        QTest::newRow("https inside http is removed first") << u"hthttps://tp://example.com"_s << u"example.com"_s;
        QTest::newRow("http inside https survives") << u"hthttp://tps://example.com"_s << QString();
        QTest::newRow("scheme in the middle") << u"a.https://b.example"_s << u"a.b.example"_s;
        QTest::newRow("port") << u"example.com:443/x"_s << u"example.com:443"_s;
        QTest::newRow("path") << u"example.com/path/x"_s << u"example.com"_s;
        QTest::newRow("leading slash") << u"/example.com/a"_s << u"example.com"_s;
        QTest::newRow("many leading slashes") << u"///example.com"_s << u"example.com"_s;
        QTest::newRow("only slashes") << u"///"_s << QString();
        QTest::newRow("dot only in the path") << u"localhost/a.b"_s << QString();
        QTest::newRow("empty") << u""_s << QString();
        QTest::newRow("only a scheme") << u"https://"_s << QString();
        QTest::newRow("www stays") << u"www.example.com"_s << u"www.example.com"_s;
        QTest::newRow("user information stays") << u"me@example.com"_s << u"me@example.com"_s;
        QTest::newRow("query without slash stays") << u"example.com?q=1"_s << u"example.com?q=1"_s;
        QTest::newRow("trailing dot stays") << u"example.com."_s << u"example.com."_s;
        QTest::newRow("inner blanks stay") << u"exa mple.com"_s << u"exa mple.com"_s;
        QTest::newRow("Unicode white space at both ends") << u"\u2003\u00A0\u3000\u2028example.com\u0085\u2029\t\r\n\v\f"_s << u"example.com"_s;
        QTest::newRow("upper case beyond ASCII") << u"B\u00DCCHER.example"_s << u"b\u00FCcher.example"_s;
        QTest::newRow("dotless i does not follow the user's language") << u"INSTAGRAM.example"_s << u"instagram.example"_s;
    }

    void normalises()
    {
        QFETCH(QString, typed);
        QFETCH(QString, expected);
        QCOMPARE(normalisedDomain(typed).value_or(QString()), expected);
        QCOMPARE(normalisedDomain(typed).has_value(), !expected.isNull());
    }

    void trimsEveryUnicodeWhiteSpaceAndLineBreak()
    {
        const QString spaces
            = u"\u0009\u000A\u000B\u000C\u000D\u0020\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A"
              u"\u2028\u2029\u202F\u205F\u3000"_s;
        for (const QChar space : spaces)
            QCOMPARE(trimmedWhiteSpaceAndLineBreaks(space + u"a b"_s + space), u"a b"_s);
        QCOMPARE(trimmedWhiteSpaceAndLineBreaks(spaces), QString());
        QCOMPARE(trimmedWhiteSpaceAndLineBreaks(u"\u200Ba\u200B"_s), u"\u200Ba\u200B"_s);
    }

    void addingSortsAndDropsDuplicates()
    {
        BlockedDomains domains({ u"z.example"_s, u"a.example"_s, u"z.example"_s });
        QCOMPARE(domains.values(), QStringList({ u"z.example"_s, u"a.example"_s, u"z.example"_s }));
        domains.add(u"m.example"_s);
        QCOMPARE(domains.values(), QStringList({ u"a.example"_s, u"m.example"_s, u"z.example"_s }));
    }

    void addingWhatIsThereLeavesOneAndSorts()
    {
        BlockedDomains domains({ u"b.example"_s, u"a.example"_s });
        domains.add(u"b.example"_s);
        QCOMPARE(domains.values(), QStringList({ u"a.example"_s, u"b.example"_s }));
    }

    void removingTakesEveryEqualEntryAndKeepsTheOrder()
    {
        BlockedDomains domains({ u"b.example"_s, u"a.example"_s, u"B.example"_s, u"b.example"_s });
        domains.remove(u"b.example"_s);
        QCOMPARE(domains.values(), QStringList({ u"a.example"_s, u"B.example"_s }));
        domains.remove(u"absent.example"_s);
        QCOMPARE(domains.values(), QStringList({ u"a.example"_s, u"B.example"_s }));
    }

    void orderIsByCodePoint()
    {
        BlockedDomains domains;
        const QStringList expected { u"-.x"_s, u"0.x"_s, u"A.x"_s, u"Z.x"_s, u"_.x"_s, u"a.x"_s, u"z.x"_s, u"\u00E4.x"_s, u"\uFF5E.x"_s,
            u"\U0001F600.x"_s };
        for (const QString& domain :
            { expected[7], expected[2], expected[9], expected[5], expected[0], expected[8], expected[6], expected[1], expected[4], expected[3] })
            domains.add(domain);
        QCOMPARE(domains.values(), expected);
    }

    void aTextStandsAfterItsBeginning()
    {
        QVERIFY(standsBefore(u"a.b", u"a.bc"));
        QVERIFY(!standsBefore(u"a.bc", u"a.b"));
        QVERIFY(!standsBefore(u"a.b", u"a.b"));
    }

    void orderAgreesWithTheBytesOfUtf8()
    {
        QRandomGenerator random(7);
        const QString alphabet = u"ab.-\u00E9\u0430\uD7FF\uE000\uFFFD\U00010000\U0010FFFD"_s;
        const auto letters = alphabet.toUcs4();
        for (int round = 0; round < 5000; ++round) {
            QString texts[2];
            for (QString& text : texts)
                for (int length = random.bounded(5); length > 0; --length) {
                    const char32_t letter = letters[random.bounded(static_cast<int>(letters.size()))];
                    text += QString::fromUcs4(&letter, 1);
                }
            QCOMPARE(standsBefore(texts[0], texts[1]), texts[0].toUtf8() < texts[1].toUtf8());
        }
    }

    void aMillionDomainsTakeFurtherOnes()
    {
        constexpr int count = 1'000'000;
        QStringList stored;
        stored.reserve(count);
        for (int index = count; index > 0; --index)
            stored << u"host%1.example"_s.arg(index, 7, 10, QChar(u'0'));
        BlockedDomains domains(std::move(stored));
        for (int index = 0; index < 200; ++index)
            domains.add(u"host%1.new.example"_s.arg(index * 4999, 7, 10, QChar(u'0')));
        QCOMPARE(domains.values().size(), count + 200);
        QVERIFY(std::ranges::is_sorted(domains.values(), standsBefore));
    }
};

QTEST_GUILESS_MAIN(TestBlockedDomains)
#include "test_blocked_domains.moc"
