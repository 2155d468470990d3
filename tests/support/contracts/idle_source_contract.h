#pragma once

#include "platform/idle_source.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTest>

#include <algorithm>
#include <memory>

namespace orvanta::testing {

/// What every IdleSource says of a user whose hands the test has.
class IdleSourceContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<IdleSource> makeSource() = 0;

    /// The user touches an input device. Done when this returns.
    virtual void touch() = 0;

    /// Lets time pass, where it does not by itself.
    virtual void pass(double /*seconds*/) { }

private:
    static double latest(IdleSource& source)
    {
        const std::vector<double> all = source.secondsSinceLastEvents();
        return all.empty() ? -1 : *std::ranges::min_element(all);
    }

private Q_SLOTS:
    void theTimeGrowsWhileNothingIsTouched()
    {
        const auto source = makeSource();
        touch();
        QVERIFY(latest(*source) >= 0);
        pass(0.5);
        QTRY_VERIFY_WITH_TIMEOUT(latest(*source) >= 0.5, 20'000);
    }

    void aTouchBeginsItAnew()
    {
        const auto source = makeSource();
        touch();
        pass(1);
        QTRY_VERIFY_WITH_TIMEOUT(latest(*source) >= 1, 20'000);
        const double before = latest(*source);
        touch();
        QVERIFY(latest(*source) < before);
    }

    void itNeverExceedsTheTimeThatHasPassed()
    {
        const auto source = makeSource();
        QElapsedTimer passed;
        passed.start();
        touch();
        const double idle = latest(*source);
        QVERIFY(idle >= 0);
        QVERIFY(idle <= static_cast<double>(passed.nsecsElapsed()) / 1e9 + 0.01);
    }
};

} // namespace orvanta::testing
