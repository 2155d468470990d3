#pragma once

#include "platform/motion_preference.h"

#include <QCoreApplication>
#include <QObject>
#include <QTest>
#include <QThread>

#include <memory>
#include <vector>

namespace orvanta::testing {

/// What every MotionPreference does on a system that has such a setting.
class MotionPreferenceContract : public QObject {
    Q_OBJECT

protected:
    /// Called at a time when motion is not to be reduced.
    virtual std::unique_ptr<MotionPreference> makePreference() = 0;

    /// The user turns the setting.
    virtual void turn(MotionPreference& preference, bool reduceMotion) = 0;

private Q_SLOTS:
    void changesAreToldWithTheNewValue()
    {
        const auto preference = makePreference();
        QCOMPARE(preference->reduceMotion(), false);
        std::vector<bool> told;
        const auto observer = preference->observe([&](bool reduceMotion) {
            QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
            QCOMPARE(preference->reduceMotion(), reduceMotion);
            told.push_back(reduceMotion);
        });
        turn(*preference, true);
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true }), 10000);
        turn(*preference, false);
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true, false }), 10000);
        turn(*preference, true);
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true, false, true }), 10000);
        turn(*preference, false);
        QTRY_COMPARE_WITH_TIMEOUT(told.size(), std::size_t(4), 10000);
    }

    void settingItToWhatItIsTellsNobody()
    {
        const auto preference = makePreference();
        std::vector<bool> told;
        const auto observer = preference->observe([&](bool reduceMotion) { told.push_back(reduceMotion); });
        turn(*preference, false);
        turn(*preference, true);
        QTRY_VERIFY_WITH_TIMEOUT(!told.empty(), 10000);
        turn(*preference, true);
        turn(*preference, false);
        QTRY_VERIFY_WITH_TIMEOUT(told.size() >= 2, 10000);
        QCOMPARE(told, std::vector<bool>({ true, false }));
    }

    void anEndedObservationIsSilent()
    {
        const auto preference = makePreference();
        int first = 0;
        int second = 0;
        auto ended = preference->observe([&](bool) { ++first; });
        const auto observer = preference->observe([&](bool) { ++second; });
        ended = {};
        turn(*preference, true);
        QTRY_COMPARE_WITH_TIMEOUT(second, 1, 10000);
        QCOMPARE(first, 0);
        turn(*preference, false);
        QTRY_COMPARE_WITH_TIMEOUT(second, 2, 10000);
    }

    void anObservationMayOutliveThePreference()
    {
        auto preference = makePreference();
        auto observer = preference->observe([](bool) { });
        preference.reset();
        observer = {};
        QVERIFY(!observer);
    }
};

} // namespace orvanta::testing
