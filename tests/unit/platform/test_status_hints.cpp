#include "platform/linux/status_hints.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestStatusHints : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatNamesTheOtherSystemIsExplained()
    {
        QVERIFY(desktopStatusHint(u"Install Orvanta Focus in Applications first"_s).contains(u"Install the program for the whole computer"_s));
        QVERIFY(desktopStatusHint(u"Approve website protection in System Settings"_s).contains(u"administrator's password"_s));
    }

    void whatExplainsItselfStandsAlone()
    {
        for (const QString& status : { u"Setup required"_s, u"Orvanta connected"_s, u"Website protection active"_s, QString() })
            QCOMPARE(desktopStatusHint(status), QString());
    }
};

QTEST_GUILESS_MAIN(TestStatusHints)
#include "test_status_hints.moc"
