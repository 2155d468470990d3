#include "localservice/iso_time.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

class TestIsoTime : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsUtcTimes_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("expected"); // -1: refused

        QTest::newRow("whole seconds") << "1970-01-01T00:00:01Z"_ba << qint64 { 1000 };
        QTest::newRow("milliseconds") << "2026-01-31T08:05:09.123Z"_ba << qint64 { 1769846709123 };
        QTest::newRow("one digit of fraction") << "1970-01-01T00:00:00.5Z"_ba << qint64 { 500 };
        QTest::newRow("nine digits of fraction") << "1970-01-01T00:00:00.123456789Z"_ba << qint64 { 123 };
        QTest::newRow("leap day") << "2024-02-29T00:00:00Z"_ba << qint64 { 1709164800000 };
        QTest::newRow("no leap day") << "2023-02-29T00:00:00Z"_ba << qint64 { -1 };
        QTest::newRow("month 13") << "2023-13-01T00:00:00Z"_ba << qint64 { -1 };
        QTest::newRow("hour 24") << "2023-01-01T24:00:00Z"_ba << qint64 { -1 };
        QTest::newRow("second 60") << "2016-12-31T23:59:60Z"_ba << qint64 { -1 };
        QTest::newRow("offset") << "2023-01-01T00:00:00+01:00"_ba << qint64 { -1 };
        QTest::newRow("no zone") << "2023-01-01T00:00:00"_ba << qint64 { -1 };
        QTest::newRow("small letters") << "2023-01-01t00:00:00z"_ba << qint64 { -1 };
        QTest::newRow("point without digits") << "2023-01-01T00:00:00.Z"_ba << qint64 { -1 };
        QTest::newRow("ten digits of fraction") << "2023-01-01T00:00:00.0123456789Z"_ba << qint64 { -1 };
        QTest::newRow("letters in the fraction") << "2023-01-01T00:00:00.12aZ"_ba << qint64 { -1 };
        QTest::newRow("date alone") << "2023-01-01"_ba << qint64 { -1 };
        QTest::newRow("empty") << ""_ba << qint64 { -1 };
        QTest::newRow("just Z") << "Z"_ba << qint64 { -1 };
    }

    void readsUtcTimes()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, expected);
        const auto time = utcTimeFromIso(text.toStdString());
        QCOMPARE(time ? time->time_since_epoch().count() : -1, expected);
    }

    void writesWhatItReads()
    {
        QCOMPARE(isoFromUtcTime(*utcTimeFromIso("2026-01-31T08:05:09.123Z")), u"2026-01-31T08:05:09.123Z"_s);
        QCOMPARE(isoFromUtcTime(*utcTimeFromIso("2026-01-31T08:05:09Z")), u"2026-01-31T08:05:09.000Z"_s);
    }
};

QTEST_GUILESS_MAIN(TestIsoTime)
#include "test_iso_time.moc"
