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

    /// The user touches an input device. A desktop may hear of it a little later.
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
        QTRY_VERIFY_WITH_TIMEOUT(latest(*source) < before, 20'000);
    }

    void itNeverExceedsTheTimeThatHasPassed()
    {
        const auto source = makeSource();
        QElapsedTimer passed;
        passed.start();
        touch();
        const auto isWithin = [&] {
            const double idle = latest(*source);
            return idle >= 0 && idle <= static_cast<double>(passed.nsecsElapsed()) / 1e9 + 0.01;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isWithin(), 20'000);
    }
};

} // namespace orvanta::testing
