#include "settings/application_filter.h"

#include "blocking/installed_application_catalog.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

InstalledApplication named(const QString& displayName, const QString& bundleIdentifier = u"org.example"_s)
{
    return { displayName, bundleIdentifier, QUrl::fromLocalFile(u"/apps/"_s + bundleIdentifier) };
}

std::vector<int> found(const std::vector<InstalledApplication>& applications, const QString& searchText, const QLocale& locale = QLocale::c())
{
    return ApplicationFilter(applications, locale).matching(searchText);
}

const std::vector<InstalledApplication> some { named(u"Album"_s, u"org.example.Pictures"_s), named(u"Chatter"_s, u"org.chat.App"_s),
    named(u"Postbox"_s, u"org.example.Letters"_s) };

} // namespace

class TestApplicationFilter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutASearchAllAreShownInTheirOrder() { QCOMPARE(found(some, {}), (std::vector { 0, 1, 2 })); }
    void aSearchOfOnlySpacesShowsTheWholeList() { QCOMPARE(found(some, u" \t\n\u3000 "_s), (std::vector { 0, 1, 2 })); }
    void theNameIsSearchedWhateverTheCase() { QCOMPARE(found(some, u"cHaTt"_s), (std::vector { 1 })); }
    void spacesAroundTheSearchDoNotCount() { QCOMPARE(found(some, u"  post\n"_s), (std::vector { 2 })); }
    void spacesWithinTheSearchCount() { QVERIFY(found(some, u"post box"_s).empty()); }
    void aSearchThatOccursOnlyInTheIdentifierShowsTheApplication() { QCOMPARE(found(some, u"LETTERS"_s), (std::vector { 2 })); }
    void theOrderIsKept() { QCOMPARE(found(some, u"example"_s), (std::vector { 0, 2 })); }
    void whatOccursNowhereShowsNothing() { QVERIFY(found(some, u"nowhere"_s).empty()); }
    void theSearchIsNoPattern() { QVERIFY(found(some, u"org.*App"_s).empty()); }

    void theLocaleDecidesWhatALetterIsInAnotherCase()
    {
        const std::vector<InstalledApplication> applications { named(u"ISPARTA"_s) };
        QCOMPARE(found(applications, u"ısparta"_s, QLocale(QLocale::Turkish)), (std::vector { 0 }));
        QVERIFY(found(applications, u"isparta"_s, QLocale(QLocale::Turkish)).empty());
        QCOMPARE(found(applications, u"isparta"_s, QLocale(QLocale::English)), (std::vector { 0 }));
    }

    void lettersBeyondAsciiAreFound()
    {
        QCOMPARE(found({ named(u"Straßenkarte"_s) }, u"STRASSE"_s, QLocale(QLocale::German)), (std::vector { 0 }));
        QCOMPARE(found({ named(u"ΛΕΞΙΚΌ"_s) }, u"λεξικό"_s, QLocale(QLocale::Greek)), (std::vector { 0 }));
        QCOMPARE(found({ named(u"Cafe\u0301"_s) }, u"CAFÉ"_s), (std::vector { 0 }));
        QCOMPARE(found({ named(u"计算器"_s) }, u"算"_s), (std::vector { 0 }));
    }
};

QTEST_APPLESS_MAIN(TestApplicationFilter)
#include "test_application_filter.moc"
