#include "platform/portable/bundle_information.h"

#include "support/install_files.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

using Reading = std::expected<BundleInformation, BundleInformationError>;

Reading parsed(const QByteArray& bytes)
{
    return parseBundleInformation(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

Reading refused(BundleInformationError error)
{
    return std::unexpected(error);
}

BundleInformation named(const QString& identifier)
{
    BundleInformation information;
    information.bundleIdentifier = identifier;
    return information;
}

QByteArray bigEndian(quint64 value, int size)
{
    QByteArray bytes;
    for (int i = size - 1; i >= 0; --i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

/// A binary property list of these objects, of which the first is the outermost.
QByteArray binary(const QList<QByteArray>& objects, quint64 top = 0)
{
    QByteArray bytes = "bplist00";
    QByteArray offsets;
    for (const QByteArray& object : objects) {
        offsets += bigEndian(static_cast<quint64>(bytes.size()), 2);
        bytes += object;
    }
    const auto table = static_cast<quint64>(bytes.size());
    return bytes + offsets + QByteArray(6, '\0') + bigEndian(2, 1) + bigEndian(1, 1) + bigEndian(static_cast<quint64>(objects.size()), 8)
        + bigEndian(top, 8) + bigEndian(table, 8);
}

QByteArray asciiObject(const QByteArray& text)
{
    return (text.size() < 15 ? QByteArray(1, static_cast<char>(0x50 + text.size())) : QByteArray("\x5F\x10") + static_cast<char>(text.size())) + text;
}

} // namespace

class TestBundleInformation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyEntryIsReadInBothForms_data()
    {
        QTest::addColumn<bool>("isBinary");
        QTest::newRow("xml") << false;
        QTest::newRow("binary") << true;
    }

    void everyEntryIsReadInBothForms()
    {
        QFETCH(bool, isBinary);
        const QByteArray xml
            = xmlPropertyList(textEntry("CFBundleIdentifier", " org.example.Editor\n") + textEntry("CFBundleDisplayName", "Éditeur &amp; 文")
                + textEntry("CFBundleName", "Editor") + "<key>LSUIElement</key><true/><key>LSBackgroundOnly</key><false/>"
                + "<key>CFBundleDocumentTypes</key><array><dict><key>CFBundleName</key><string>inner</string></dict></array>"
                + "<key>LSMinimumSystemVersion</key><string>13.0</string><key>Number</key><integer>7</integer>");
        const QByteArray bytes = isBinary ? binaryPropertyList(xml) : xml;
        QCOMPARE(bytes.startsWith("bplist00"), isBinary);
        QCOMPARE(parsed(bytes),
            Reading(BundleInformation { .bundleIdentifier = u" org.example.Editor\n"_s,
                .displayName = u"Éditeur & 文"_s,
                .name = u"Editor"_s,
                .uiElement = true,
                .backgroundOnly = false }));
    }

    void entriesOfAnotherTypeAreAbsentInBothForms()
    {
        const QByteArray xml = xmlPropertyList("<key>LSUIElement</key><string>1</string><key>LSBackgroundOnly</key><integer>1</integer>"
                                               "<key>CFBundleDisplayName</key><array><string>x</string></array><key>CFBundleName</key><true/>"
                                               "<key>CFBundleIdentifier</key><string>a.b</string>");
        QCOMPARE(parsed(xml), Reading(named(u"a.b"_s)));
        QCOMPARE(parsed(binaryPropertyList(xml)), Reading(named(u"a.b"_s)));
    }

    void anEmptyTextIsATextInBothForms()
    {
        BundleInformation expected;
        expected.displayName = QString();
        const QByteArray xml = xmlPropertyList("<key>CFBundleDisplayName</key><string/>");
        for (const QByteArray& bytes : { xml, binaryPropertyList(xml) }) {
            const auto information = parsed(bytes);
            QVERIFY(information && information->displayName && information->displayName->isEmpty());
        }
    }

    void anEmptyDictionarySaysNothing()
    {
        QCOMPARE(parsed(xmlPropertyList("")), Reading(BundleInformation()));
        QCOMPARE(parsed("<plist><dict/></plist>"), Reading(BundleInformation()));
        QCOMPARE(parsed(binary({ QByteArray(1, '\xD0') })), Reading(BundleInformation()));
    }

    void theLastOfTwoEntriesCounts()
    {
        QCOMPARE(parsed(xmlPropertyList(textEntry("CFBundleIdentifier", "a.b") + textEntry("CFBundleIdentifier", "c.d"))), Reading(named(u"c.d"_s)));
        QCOMPARE(
            parsed(xmlPropertyList(textEntry("CFBundleIdentifier", "a.b") + "<key>CFBundleIdentifier</key><true/>")), Reading(BundleInformation()));
    }

    void otherEncodingsAndPlainDictionariesAreRead()
    {
        const QString text
            = u"<?xml version='1.0' encoding='UTF-16'?><plist><dict><key>CFBundleIdentifier</key><string>ä.b</string></dict></plist>"_s;
        QByteArray utf16 = "\xFF\xFE";
        for (const QChar character : text)
            utf16 += QByteArray(1, static_cast<char>(character.unicode() & 0xFF)) + static_cast<char>(character.unicode() >> 8);
        QCOMPARE(parsed(utf16), Reading(named(u"ä.b"_s)));
        QCOMPARE(parsed("<dict><key>CFBundleIdentifier</key><string><![CDATA[a.b]]></string></dict>"), Reading(named(u"a.b"_s)));
    }

    void whatIsNoDictionaryIsRefused()
    {
        QCOMPARE(parsed("<plist><array><string>x</string></array></plist>"), refused(BundleInformationError::noDictionary));
        QCOMPARE(parsed("<plist><string>x</string></plist>"), refused(BundleInformationError::noDictionary));
        QCOMPARE(parsed(binary({ asciiObject("x") })), refused(BundleInformationError::noDictionary));
    }

    void whatIsNoPropertyListIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("words") << QByteArray("just words");
        QTest::newRow("zeros") << QByteArray(1000, '\0');
        QTest::newRow("cut off") << xmlPropertyList(textEntry("CFBundleIdentifier", "a.b")).chopped(12);
        QTest::newRow("no object") << QByteArray("<plist></plist>");
        QTest::newRow("two objects") << QByteArray("<plist><dict/><dict/></plist>");
        QTest::newRow("a key without a value") << xmlPropertyList("<key>CFBundleName</key>");
        QTest::newRow("two keys in a row") << xmlPropertyList("<key>a</key><key>b</key><true/>");
        QTest::newRow("a value without a key") << xmlPropertyList("<string>x</string>");
        QTest::newRow("an element in a text") << xmlPropertyList("<key>CFBundleName</key><string>a<b/></string>");
        QTest::newRow("entities of its own") << QByteArray(
            "<!DOCTYPE plist [<!ENTITY a 'aaaaaaaa'>]><plist><dict><key>CFBundleName</key><string>&a;</string></dict></plist>");
        QTest::newRow("binary beginning alone") << QByteArray("bplist00");
        QTest::newRow("no objects") << binary({});
        QTest::newRow("outermost object out of range") << binary({ QByteArray(1, '\xD0') }, 1);
        QTest::newRow("more entries than bytes") << binary({ QByteArray("\xDF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10) });
        QTest::newRow("a count that is no number") << binary({ QByteArray("\xDF\x50", 2) });
    }

    void whatIsNoPropertyListIsRefused()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(parsed(bytes), refused(BundleInformationError::noPropertyList));
    }

    void aBinaryEntryThatPointsNowhereIsAbsent()
    {
        // One entry whose value is an object that is not there, and one that is sound.
        const QByteArray dictionary("\xD2\x01\x03\x09\x02", 5);
        QCOMPARE(parsed(binary({ dictionary, asciiObject("CFBundleName"), asciiObject("a.b"), asciiObject("CFBundleIdentifier") })),
            Reading(named(u"a.b"_s)));
    }

    void aBinaryTextBeyondTheEndIsAbsent()
    {
        const QByteArray dictionary("\xD1\x01\x02", 3);
        QCOMPARE(
            parsed(binary({ dictionary, asciiObject("CFBundleName"), QByteArray("\x5F\x12\x00\xFF\xFF\xFF", 6) })), Reading(BundleInformation()));
        QCOMPARE(parsed(binary({ dictionary, asciiObject("CFBundleName"), QByteArray("\x6F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10) })),
            Reading(BundleInformation()));
    }

    void aBinaryDictionaryThatHoldsItselfEnds()
    {
        const QByteArray dictionary("\xD1\x01\x00", 3);
        QCOMPARE(parsed(binary({ dictionary, asciiObject("CFBundleName") })), Reading(BundleInformation()));
    }

    void deepNestingIsPassedOver()
    {
        constexpr int depth = 100'000;
        const QByteArray nested = QByteArray("<array>").repeated(depth) + QByteArray("</array>").repeated(depth);
        QCOMPARE(parsed(xmlPropertyList("<key>x</key>" + nested + textEntry("CFBundleIdentifier", "a.b"))), Reading(named(u"a.b"_s)));
    }

    void whatIsTooLargeIsRefused()
    {
        QCOMPARE(parsed(QByteArray(static_cast<qsizetype>(bundleInformationLimit) + 1, ' ')), refused(BundleInformationError::tooLarge));
    }

    void everyCutOfABinaryListIsRefusedOrRead()
    {
        const QByteArray whole = binaryPropertyList(xmlPropertyList(textEntry("CFBundleIdentifier", "a.b") + textEntry("CFBundleName", "é")));
        QVERIFY(!whole.isEmpty());
        for (qsizetype size = 0; size < whole.size(); ++size)
            QVERIFY(!parsed(whole.first(size)));
    }
};

QTEST_GUILESS_MAIN(TestBundleInformation)
#include "test_bundle_information.moc"
