#include "blocking/breathing_phase.h"

#include <QTest>

#include <chrono>

using namespace orvanta;

class TestBreathingPhase : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void breathesInForFourSecondsAndOutForSix_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("level");
        QTest::newRow("the breath begins") << 0.0 << 0.0;
        QTest::newRow("a quarter in") << 1.0 << 0.25;
        QTest::newRow("half in") << 2.0 << 0.5;
        QTest::newRow("nearly in") << 3.96 << 0.99;
        QTest::newRow("exactly in") << 4.0 << 1.0;
        QTest::newRow("half out") << 7.0 << 0.5;
        QTest::newRow("nearly out") << 9.94 << 0.01;
        QTest::newRow("the next breath begins") << 10.0 << 0.0;
        QTest::newRow("the next breath is full") << 14.0 << 1.0;
        QTest::newRow("today") << 806'500'002.0 << 0.5;
        QTest::newRow("a second before the reference date") << -1.0 << 1.0 / 6;
        QTest::newRow("the last full breath before it") << -6.0 << 1.0;
        QTest::newRow("half in, before it") << -8.0 << 0.5;
        QTest::newRow("a whole breath before it") << -10.0 << 0.0;
    }

    void breathesInForFourSecondsAndOutForSix()
    {
        QFETCH(double, seconds);
        QFETCH(double, level);
        QVERIFY2(std::abs(BreathingPhase::level(seconds) - level) < 1e-12, qPrintable(QString::number(BreathingPhase::level(seconds), 'g', 17)));
    }

    void isExactAtTheTurningPoints()
    {
        QVERIFY(BreathingPhase::level(0) == 0.0);
        QVERIFY(BreathingPhase::level(4) == 1.0);
        QVERIFY(BreathingPhase::level(10) == 0.0);
        QVERIFY(BreathingPhase::level(-10) == 0.0);
        QVERIFY(BreathingPhase::level(-6) == 1.0);
    }

    void staysBetweenNothingAndAll()
    {
        for (double seconds = -25; seconds < 25; seconds += 0.0137) {
            const double level = BreathingPhase::level(seconds);
            QVERIFY2(level >= 0 && level <= 1, qPrintable(QString::number(seconds)));
        }
        QVERIFY(BreathingPhase::level(-1e-20) >= 0);
    }

    void countsSecondsFromTheReferenceDate()
    {
        using namespace std::chrono;
        constexpr std::time_t referenceDate = 978'307'200; // 2001-01-01T00:00:00Z in seconds since 1970
        const auto reference = system_clock::from_time_t(referenceDate);
        QCOMPARE(BreathingPhase::secondsSinceReferenceDate(reference), 0.0);
        QCOMPARE(BreathingPhase::secondsSinceReferenceDate(reference + milliseconds(2500)), 2.5);
        QCOMPARE(BreathingPhase::secondsSinceReferenceDate(reference - seconds(3)), -3.0);
    }

    void quantitiesAreLinearInTheLevel_data()
    {
        QTest::addColumn<double>("level");
        QTest::addColumn<double>("inner");
        QTest::addColumn<double>("middle");
        QTest::addColumn<double>("scale");
        QTest::addColumn<double>("layer");
        QTest::newRow("out") << 0.0 << 0.34 << 0.12 << 0.82 << 0.34;
        QTest::newRow("half") << 0.5 << 0.51 << 0.17 << 0.95 << 0.63;
        QTest::newRow("reduced motion") << BreathingPhase::reducedMotionLevel << 0.5508 << 0.182 << 0.9812 << 0.6996;
        QTest::newRow("in") << 1.0 << 0.68 << 0.22 << 1.08 << 0.92;
    }

    void quantitiesAreLinearInTheLevel()
    {
        QFETCH(double, level);
        QFETCH(double, inner);
        QFETCH(double, middle);
        QFETCH(double, scale);
        QFETCH(double, layer);
        QCOMPARE(BreathingPhase::innerGlowOpacity(level), inner);
        QCOMPARE(BreathingPhase::middleGlowOpacity(level), middle);
        QCOMPARE(BreathingPhase::glowScale(level), scale);
        QCOMPARE(BreathingPhase::glowLayerOpacity(level), layer);
    }
};

QTEST_APPLESS_MAIN(TestBreathingPhase)
#include "test_breathing_phase.moc"
