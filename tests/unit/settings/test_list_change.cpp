#include "settings/list_change.h"

#include <QStringList>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestListChange : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void changeIsWhatLiesBetweenTheCommonEnds_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("after");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("removed");
        QTest::addColumn<int>("inserted");
        const auto list = [](const char* letters) { return QString::fromLatin1(letters).split(QString(), Qt::SkipEmptyParts); };
        QTest::newRow("both empty") << list("") << list("") << 0 << 0 << 0;
        QTest::newRow("the same") << list("abc") << list("abc") << 3 << 0 << 0;
        QTest::newRow("filled") << list("") << list("abc") << 0 << 0 << 3;
        QTest::newRow("emptied") << list("abc") << list("") << 0 << 3 << 0;
        QTest::newRow("one in the middle") << list("ac") << list("abc") << 1 << 0 << 1;
        QTest::newRow("one at the front") << list("bc") << list("abc") << 0 << 0 << 1;
        QTest::newRow("one at the end") << list("ab") << list("abc") << 2 << 0 << 1;
        QTest::newRow("one away") << list("abc") << list("ac") << 1 << 1 << 0;
        QTest::newRow("one of several alike away") << list("aaa") << list("aa") << 2 << 1 << 0;
        QTest::newRow("one of several alike more") << list("aa") << list("aaa") << 2 << 0 << 1;
        QTest::newRow("replaced") << list("abcd") << list("axyd") << 1 << 2 << 2;
        QTest::newRow("all others") << list("ab") << list("cde") << 0 << 2 << 3;
    }

    void changeIsWhatLiesBetweenTheCommonEnds()
    {
        QFETCH(QStringList, before);
        QFETCH(QStringList, after);
        QFETCH(int, first);
        QFETCH(int, removed);
        QFETCH(int, inserted);
        QCOMPARE(changeBetween(before, after), (ListChange { first, removed, inserted }));
        QStringList result = before;
        result.remove(first, removed);
        for (int index = 0; index < inserted; ++index)
            result.insert(first + index, after.at(first + index));
        QCOMPARE(result, after);
    }
};

QTEST_APPLESS_MAIN(TestListChange)
#include "test_list_change.moc"
