#include "platform/linux/qt_screens.h"
#include "platform/linux/screen_numbers.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestScreenNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anOutputHasTheSameNumberInEverySession()
    {
        // The published test values of the 32-bit FNV-1a hash.
        QCOMPARE(screenNumberOfName(u"a"_s), 0xe40c292cU);
        QCOMPARE(screenNumberOfName(u"foobar"_s), 0xbf9cf968U);
        QCOMPARE(ScreenNumbers().numbers({ u"foobar"_s }), std::vector<std::uint32_t>({ 0xbf9cf968U }));
    }

    void theOrderOfOutputsDoesNotMatter()
    {
        const auto one = ScreenNumbers().numbers({ u"DP-1"_s, u"HDMI-1"_s });
        const auto other = ScreenNumbers().numbers({ u"HDMI-1"_s, u"DP-1"_s });
        QCOMPARE(one.at(0), other.at(1));
        QCOMPARE(one.at(1), other.at(0));
        QVERIFY(one.at(0) != one.at(1));
    }

    void noNumberIsZero()
    {
        ScreenNumbers numbers([](const QString&) { return 0U; });
        QCOMPARE(numbers.numbers({ u"A"_s, u"B"_s }), std::vector<std::uint32_t>({ 1, 2 }));
    }

    void outputsWhoseHashesCollideAreToldApart()
    {
        ScreenNumbers numbers([](const QString&) { return 0xffffffffU; });
        QCOMPARE(numbers.numbers({ u"A"_s, u"B"_s, u"C"_s }), std::vector<std::uint32_t>({ 0xffffffffU, 1, 2 }));
        // B keeps what it got, though A is gone.
        QCOMPARE(numbers.numbers({ u"B"_s }), std::vector<std::uint32_t>({ 1 }));
        QCOMPARE(numbers.numbers({ u"A"_s, u"B"_s }), std::vector<std::uint32_t>({ 0xffffffffU, 1 }));
    }

    void outputsOfOneNameAreToldApart()
    {
        ScreenNumbers numbers;
        const auto both = numbers.numbers({ u"VGA"_s, u"VGA"_s });
        QVERIFY(both.at(0) != both.at(1));
        QCOMPARE(numbers.numbers({ u"VGA"_s, u"VGA"_s }), both);
        QCOMPARE(numbers.numbers({ u"VGA"_s }), std::vector<std::uint32_t>({ both.at(0) }));
    }

    void aScreenThatBearsTheDisplaysNameIsAPlaceholder()
    {
        for (const QString& name : { u""_s, u":0"_s, u":0.0"_s, u":12.1"_s, u"localhost:10.0"_s })
            QVERIFY2(isPlaceholderScreen(name), qPrintable(name));
        for (const QString& name : { u"DP-1"_s, u"eDP-1-1"_s, u"screen"_s, u"HDMI-A-0"_s, u"0.0"_s, u"a:b"_s, u":0.0 left"_s })
            QVERIFY2(!isPlaceholderScreen(name), qPrintable(name));
    }

    void aScaledDisplayBeginsAtItsOwnPixelAndIsLargerThanItsFrame()
    {
        QCOMPARE(nativeFrame(QRect(0, 0, 960, 1080), 1.0), QRect(0, 0, 960, 1080));
        QCOMPARE(nativeFrame(QRect(960, 0, 640, 720), 1.5), QRect(960, 0, 960, 1080));
        QCOMPARE(nativeFrame(QRect(3840, 100, 1707, 960), 1.5), QRect(3840, 100, 2561, 1440));
    }
};

QTEST_GUILESS_MAIN(TestScreenNumbers)
#include "test_screen_numbers.moc"
