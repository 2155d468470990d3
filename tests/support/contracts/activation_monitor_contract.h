#pragma once

#include "platform/activation_monitor.h"

#include <QObject>
#include <QTest>
#include <QThread>

#include <memory>
#include <optional>
#include <vector>

namespace orvanta::testing {

/// What every ActivationMonitor does, on a desktop with two applications and one that has no identifier.
class ActivationMonitorContract : public QObject {
    Q_OBJECT

protected:
    enum class Front { first, second, nameless };

    /// The monitor to be tested. Called anew for each test.
    virtual std::unique_ptr<ActivationMonitor> makeMonitor() = 0;

    /// The user brings the application to the front. It is there when this returns, though it need not have been told yet.
    virtual void bringToFront(ActivationMonitor& monitor, Front application) = 0;

    [[nodiscard]] virtual QString identifierOf(Front application) const = 0;

    using Told = std::vector<std::optional<QString>>;

    /// The window system may report that nothing is in front between two applications, as often as it likes: only what has
    /// an identifier is compared where nothing else is meant.
    static Told named(const Told& told)
    {
        Told result;
        for (const auto& identifier : told) {
            if (identifier)
                result.push_back(identifier);
        }
        return result;
    }

    /// The application is in front, and everything is told that was to be told of its coming.
    void beginWith(ActivationMonitor& monitor, Front application)
    {
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        bringToFront(monitor, application == Front::first ? Front::second : Front::first);
        bringToFront(monitor, application);
        QTRY_VERIFY_WITH_TIMEOUT(!named(told).empty() && named(told).back() == identifierOf(application), 10000);
    }

private Q_SLOTS:
    void eachApplicationThatComesToTheFrontIsTold()
    {
        const auto monitor = makeMonitor();
        beginWith(*monitor, Front::second);
        Told told;
        const auto observer = monitor->observe([&](const std::optional<QString>& identifier) {
            QCOMPARE(QThread::currentThread(), qApp->thread());
            told.push_back(identifier);
        });
        Told expected;
        for (const Front application : { Front::first, Front::second, Front::first }) {
            bringToFront(*monitor, application);
            expected.emplace_back(identifierOf(application));
            QTRY_COMPARE_WITH_TIMEOUT(named(told), expected, 10000);
        }
    }

    void whatIsInFrontAtTheBeginningIsNotTold()
    {
        const auto monitor = makeMonitor();
        beginWith(*monitor, Front::first);
        Told told;
        const auto observer = monitor->observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        bringToFront(*monitor, Front::second);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ identifierOf(Front::second) }), 10000);
    }

    void anApplicationWithoutIdentifierIsToldAsNone()
    {
        const auto monitor = makeMonitor();
        beginWith(*monitor, Front::first);
        Told told;
        const auto observer = monitor->observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        bringToFront(*monitor, Front::nameless);
        QTRY_VERIFY_WITH_TIMEOUT(!told.empty() && !told.back(), 10000);
        bringToFront(*monitor, Front::first);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ identifierOf(Front::first) }), 10000);
    }

    void everyObserverIsTold()
    {
        const auto monitor = makeMonitor();
        beginWith(*monitor, Front::second);
        Told one;
        Told other;
        const auto first = monitor->observe([&](const std::optional<QString>& identifier) { one.push_back(identifier); });
        const auto second = monitor->observe([&](const std::optional<QString>& identifier) { other.push_back(identifier); });
        bringToFront(*monitor, Front::first);
        QTRY_COMPARE_WITH_TIMEOUT(named(one), Told({ identifierOf(Front::first) }), 10000);
        QTRY_COMPARE_WITH_TIMEOUT(named(other), Told({ identifierOf(Front::first) }), 10000);
    }

    void anEndedObservationIsSilent()
    {
        const auto monitor = makeMonitor();
        beginWith(*monitor, Front::second);
        int silent = 0;
        Told told;
        auto ended = monitor->observe([&](const std::optional<QString>&) { ++silent; });
        const auto observer = monitor->observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        ended = {};
        bringToFront(*monitor, Front::first);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ identifierOf(Front::first) }), 10000);
        QCOMPARE(silent, 0);
    }

    void anObserverMayEndItsObservationAndTheMonitor()
    {
        auto monitor = makeMonitor();
        ActivationMonitor& watched = *monitor;
        beginWith(watched, Front::second);
        int told = 0;
        Subscription observer;
        observer = monitor->observe([&](const std::optional<QString>&) {
            ++told;
            observer = {};
        });
        bringToFront(watched, Front::first);
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, 10000);
        Told others;
        const auto other = monitor->observe([&](const std::optional<QString>& identifier) { others.push_back(identifier); });
        bringToFront(watched, Front::second);
        QTRY_COMPARE_WITH_TIMEOUT(named(others), Told({ identifierOf(Front::second) }), 10000);
        QCOMPARE(told, 1);
        monitor.reset();
    }

    void aSubscriptionMayOutliveTheMonitor()
    {
        auto monitor = makeMonitor();
        int told = 0;
        auto observer = monitor->observe([&](const std::optional<QString>&) { ++told; });
        monitor.reset();
        observer = {};
        QCOMPARE(told, 0);
    }
};

} // namespace orvanta::testing
