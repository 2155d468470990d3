#include "app/print_diagnosis.h"

#include <QTest>

#include <array>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestPrintDiagnosis : public QObject {
    Q_OBJECT

    static QByteArray printed(const DesktopDiagnosis& diagnosis, int expectedStatus)
    {
        std::array<char, 4096> buffer {};
        std::FILE* const output = ::fmemopen(buffer.data(), buffer.size(), "w");
        const int status = printDiagnosis(diagnosis, output);
        std::fclose(output);
        return status == expectedStatus ? QByteArray(buffer.data()) : QByteArray("another status");
    }

private Q_SLOTS:
    void whereNothingIsMissingItSaysSo()
    {
        QCOMPARE(printed({ .sources = { u"One"_s, u"Two"_s }, .missing = {} }, EXIT_SUCCESS), QByteArray("One\nTwo\nNothing is missing.\n"));
    }

    void whatIsMissingFollowsAndFails()
    {
        QCOMPARE(printed({ .sources = { u"One"_s }, .missing = { u"This."_s, u"That."_s } }, EXIT_FAILURE),
            QByteArray("One\nMissing: This.\nMissing: That.\n"));
    }

    void whatCannotBeWrittenIsAFailure()
    {
        std::FILE* const full = std::fopen("/dev/full", "w");
        QVERIFY(full);
        QCOMPARE(printDiagnosis({ .sources = { u"One"_s }, .missing = {} }, full), EXIT_FAILURE);
        std::fclose(full);
    }
};

QTEST_GUILESS_MAIN(TestPrintDiagnosis)
#include "test_print_diagnosis.moc"
