#include "harness/prompt_cleaning.h"

#include <QRegularExpression>
#include <QTest>

#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// The same by regular expressions: right by definition, and quadratic in what is hostile to it.
QString cleanedByExpressions(QString text)
{
    static const QRegularExpression context(
        u"<in-app-browser-context\\b[^>]*>[\\s\\S]*?</in-app-browser-context>"_s, QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression heading(u"(*ANY)(?im)^\\s*## My request for Codex:\\s*"_s, QRegularExpression::UseUnicodePropertiesOption);
    text.remove(context);
    text.remove(heading);
    return text.trimmed();
}

} // namespace

class TestPromptCleaning : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatAgentsPutAroundAPromptIsRemoved_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cleaned");
        QTest::newRow("nothing around it") << u"Fix the bug"_s << u"Fix the bug"_s;
        QTest::newRow("white space at both ends") << u"\n\t \u00a0Fix\n the bug\u2003\r\n"_s << u"Fix\n the bug"_s;
        QTest::newRow("a browser's context alone") << u"<in-app-browser-context>a\nb</in-app-browser-context>"_s << QString();
        QTest::newRow("a browser's context before it")
            << u"<in-app-browser-context url=\"x\" \n y>a <b> c</in-app-browser-context>\n\nFix"_s << u"Fix"_s;
        QTest::newRow("two contexts, each to its own end")
            << u"a<in-app-browser-context>1</in-app-browser-context>b<in-app-browser-context>2</in-app-browser-context>c"_s << u"abc"_s;
        QTest::newRow("another element") << u"<in-app-browser-contexts>a</in-app-browser-context>"_s
                                         << u"<in-app-browser-contexts>a</in-app-browser-context>"_s;
        QTest::newRow("another case") << u"<IN-APP-BROWSER-CONTEXT>a</IN-APP-BROWSER-CONTEXT>"_s
                                      << u"<IN-APP-BROWSER-CONTEXT>a</IN-APP-BROWSER-CONTEXT>"_s;
        QTest::newRow("a context that does not end") << u"<in-app-browser-context>a"_s << u"<in-app-browser-context>a"_s;
        QTest::newRow("the heading") << u"## My request for Codex:\nFix"_s << u"Fix"_s;
        QTest::newRow("the heading in another case") << u"  ## MY REQUEST FOR codex:Fix"_s << u"Fix"_s;
        QTest::newRow("the heading after other lines") << u"Notes\n\n  ## My request for Codex: \n\n Fix"_s << u"Notes\nFix"_s;
        QTest::newRow("the heading within a line") << u"See ## My request for Codex: here"_s << u"See ## My request for Codex: here"_s;
        QTest::newRow("the heading twice") << u"## My request for Codex:\n## My request for Codex: Fix"_s << u"Fix"_s;
        QTest::newRow("a context, then the heading")
            << u"<in-app-browser-context>a</in-app-browser-context>\n## My request for Codex:\nFix"_s << u"Fix"_s;
        QTest::newRow("nothing but the heading") << u"## My request for Codex:"_s << QString();
    }

    void whatAgentsPutAroundAPromptIsRemoved()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, cleaned);
        QCOMPARE(cleanedPrompt(text), cleaned);
        QCOMPARE(cleanedByExpressions(text), cleaned);
    }

    void itIsTheSameAsTheExpressionsOnThousandsOfTexts()
    {
        const QStringList parts { u"<in-app-browser-context"_s, u"</in-app-browser-context>"_s, u">"_s, u"<"_s, u"## My request for Codex:"_s,
            u"## my request for codex:"_s, u"#"_s, u" "_s, u"\n"_s, u"\r\n"_s, u"\r"_s, u"\u2028"_s, u"\u0085"_s, u"x"_s, u"_"_s, u"\u00e4"_s,
            u"\t"_s };
        std::minstd_rand random(7);
        for (int round = 0; round < 20'000; ++round) {
            QString text;
            for (auto count = random() % 12; count > 0; --count)
                text += parts[static_cast<qsizetype>(random() % static_cast<std::minstd_rand::result_type>(parts.size()))];
            const QString expected = cleanedByExpressions(text);
            QVERIFY2(cleanedPrompt(text) == expected, qUtf8Printable(QString::fromUtf8(text.toUtf8().toPercentEncoding())));
        }
    }

    // Each of these takes regular expressions hours.
    void hostileTextsOfAMegabyteAreCleanedLikeOthers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qsizetype>("length");
        constexpr qsizetype mebibyte = 1024 * 1024;
        const QString opening = u"<in-app-browser-context>"_s;
        QTest::newRow("contexts without an end") << opening.repeated(mebibyte / opening.size()) << mebibyte / opening.size() * opening.size();
        const QString half = u"<in-app-browser-context "_s;
        QTest::newRow("tags without an end") << half.repeated(mebibyte / half.size()) << mebibyte / half.size() * half.size() - 1;
        QTest::newRow("line feeds between words") << u"a"_s + QString(mebibyte, u'\n') + u"b"_s << mebibyte + 2;
        const QString heading = u"x ## My request for Codex: "_s;
        QTest::newRow("headings within lines") << heading.repeated(mebibyte / heading.size()) << mebibyte / heading.size() * heading.size() - 1;
    }

    void hostileTextsOfAMegabyteAreCleanedLikeOthers()
    {
        QFETCH(const QString, text);
        QFETCH(const qsizetype, length);
        QCOMPARE(cleanedPrompt(text).size(), length);
    }

    void charactersAreCountedAsAReaderCountsThem()
    {
        const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
        const QString accented = u"e\u0301"_s;
        const QString flag = u"\U0001F1E9\U0001F1EA"_s;
        QCOMPARE(firstCharacters(family + accented + flag + u"\r\n"_s + u"x"_s, 4), family + accented + flag + u"\r\n"_s);
        QCOMPARE(firstCharacters(family.repeated(5), 2), family.repeated(2));
        QCOMPARE(firstCharacters(u"abc"_s, 3), u"abc"_s);
        QCOMPARE(firstCharacters(u"abc"_s, 4), u"abc"_s);
        QCOMPARE(firstCharacters(QString(), 4), QString());
        QCOMPARE(firstCharacters(accented.repeated(4001), 4000), accented.repeated(4000));
    }
};

QTEST_APPLESS_MAIN(TestPromptCleaning)
#include "test_prompt_cleaning.moc"
