#pragma once

#include "platform/system_notifications.h"
#include "support/contracts/answered.h"

#include <QCoreApplication>
#include <QObject>
#include <QTest>
#include <QThread>

#include <memory>

namespace orvanta::testing {

/// What every SystemNotifications does.
class SystemNotificationsContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<SystemNotifications> makeNotifications() = 0;

    /// The name that post() posts.
    virtual QString name() { return QStringLiteral("com.orvanta.focus.blocked-domain-attempt"); }
    /// Whoever posts such a notification on this system does so, once.
    virtual void post(SystemNotifications& notifications) = 0;

private:
    static bool waitsFor(const std::function<bool()>& condition)
    {
        return comesTrue([] { }, condition);
    }

private Q_SLOTS:
    void whatIsPostedIsDeliveredOnTheMainThread()
    {
        const auto notifications = makeNotifications();
        int delivered = 0;
        bool isMainThread = true;
        const auto observer = notifications->observe(name(), [&] {
            ++delivered;
            isMainThread = isMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
        });
        for (int posted = 1; posted <= 2; ++posted) {
            post(*notifications);
            QVERIFY(waitsFor([&] { return delivered >= posted; }));
            QCOMPARE(delivered, posted);
        }
        QVERIFY(isMainThread);
    }

    void everyObserverIsToldInTheOrderInWhichTheyCame()
    {
        const auto notifications = makeNotifications();
        QStringList told;
        const auto first = notifications->observe(name(), [&] { told << QStringLiteral("first"); });
        const auto second = notifications->observe(name(), [&] { told << QStringLiteral("second"); });
        post(*notifications);
        QVERIFY(waitsFor([&] { return told.size() >= 2; }));
        QCOMPARE(told, QStringList({ QStringLiteral("first"), QStringLiteral("second") }));
    }

    void onlyTheExactNameCounts()
    {
        const auto notifications = makeNotifications();
        int others = 0;
        int ours = 0;
        std::vector<Subscription> observers;
        for (const QString& other : { name().toUpper(), name() + QStringLiteral("s"), name().chopped(1), QString() })
            observers.push_back(notifications->observe(other, [&] { ++others; }));
        observers.push_back(notifications->observe(name(), [&] { ++ours; }));
        post(*notifications);
        QVERIFY(waitsFor([&] { return ours > 0; }));
        QCOMPARE(others, 0);
    }

    void anEndedObservationIsSilent()
    {
        const auto notifications = makeNotifications();
        int ended = 0;
        int kept = 0;
        auto first = notifications->observe(name(), [&] { ++ended; });
        const auto second = notifications->observe(name(), [&] { ++kept; });
        first = {};
        post(*notifications);
        QVERIFY(waitsFor([&] { return kept > 0; }));
        QCOMPARE(ended, 0);
    }

    void anObservationMayOutliveItsSource()
    {
        auto notifications = makeNotifications();
        int delivered = 0;
        const auto observer = notifications->observe(name(), [&] { ++delivered; });
        const auto others = makeNotifications();
        int theirs = 0;
        const auto other = others->observe(name(), [&] { ++theirs; });
        notifications.reset();
        post(*others);
        QVERIFY(waitsFor([&] { return theirs > 0; }));
        QCOMPARE(delivered, 0);
    }
};

} // namespace orvanta::testing
