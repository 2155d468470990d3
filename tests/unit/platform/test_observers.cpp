#include "platform/portable/observers.h"

#include <QTest>

#include <optional>

using namespace orvanta;

class TestObservers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyoneIsToldInTheOrderInWhichTheyCame()
    {
        Observers<int> observers;
        std::vector<int> told;
        const auto first = observers.add([&](int value) { told.push_back(value); });
        const auto second = observers.add([&](int value) { told.push_back(10 * value); });
        observers.notify(1);
        observers.notify(2);
        QCOMPARE(told, std::vector<int>({ 1, 10, 2, 20 }));
    }

    void whoLeavesWhileBeingToldIsNotToldAgain()
    {
        Observers<> observers;
        int told = 0;
        Subscription first;
        Subscription second;
        first = observers.add([&] {
            ++told;
            first = {};
            second = {};
        });
        second = observers.add([&] { told += 100; });
        observers.notify();
        observers.notify();
        QCOMPARE(told, 1);
        QVERIFY(observers.isEmpty());
    }

    void whoComesWhileTheOthersAreToldIsToldTheNextTime()
    {
        Observers<> observers;
        int told = 0;
        std::optional<Subscription> late;
        const auto first = observers.add([&] {
            if (!late)
                late = observers.add([&] { ++told; });
        });
        observers.notify();
        QCOMPARE(told, 0);
        observers.notify();
        QCOMPARE(told, 1);
    }

    void theSourceMayEndWhileItTells()
    {
        auto observers = std::make_unique<Observers<>>();
        int told = 0;
        const auto first = observers->add([&] {
            ++told;
            observers.reset();
        });
        auto second = observers->add([&] { ++told; });
        observers->notify();
        QCOMPARE(told, 1);
        second = {};
        QVERIFY(!observers);
    }
};

QTEST_GUILESS_MAIN(TestObservers)
#include "test_observers.moc"
