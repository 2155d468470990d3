#pragma once

#include "platform/system_focus.h"

#include <QCoreApplication>
#include <QObject>
#include <QTest>
#include <QThread>

#include <memory>
#include <vector>

namespace orvanta::testing {

/// What every SystemFocus does on a system that has a Focus which the program may know.
class SystemFocusContract : public QObject {
    Q_OBJECT

protected:
    static constexpr int patience = 15'000;

    /// Called at a time when Focus is off.
    virtual std::unique_ptr<SystemFocus> makeFocus() = 0;

    /// The user turns the Focus.
    virtual void turn(SystemFocus& focus, bool isOn) = 0;

    /// The user, where the system asks one, grants what is being asked for.
    virtual void grant(SystemFocus&) { }

private Q_SLOTS:
    void itFollowsTheUser()
    {
        const auto focus = makeFocus();
        QTRY_COMPARE_WITH_TIMEOUT(focus->authorisation(), FocusAuthorisation::authorised, patience);
        QTRY_COMPARE_WITH_TIMEOUT(focus->isFocused(), std::optional(false), patience);
        for (const bool isOn : { true, false, true, false }) {
            turn(*focus, isOn);
            QTRY_COMPARE_WITH_TIMEOUT(focus->isFocused(), std::optional(isOn), patience);
            QCOMPARE(focus->authorisation(), FocusAuthorisation::authorised);
        }
    }

    void permissionToShowAlertsIsAnsweredOnceFromTheEventLoop()
    {
        const auto focus = makeFocus();
        std::vector<Result<bool>> answers;
        focus->requestNotificationPermission([&](const Result<bool>& answer) {
            QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
            answers.push_back(answer);
        });
        QVERIFY(answers.empty());
        grant(*focus);
        QTRY_COMPARE_WITH_TIMEOUT(answers.size(), std::size_t(1), patience);
        QCOMPARE(answers.front(), Result<bool>(true));
        QCoreApplication::processEvents();
        QCOMPARE(answers.size(), std::size_t(1));
    }

    void authorisationIsAnsweredOnceFromTheEventLoopWithHowThingsStand()
    {
        const auto focus = makeFocus();
        QTRY_VERIFY_WITH_TIMEOUT(focus->isFocused(), patience);
        std::vector<FocusAuthorisation> answers;
        focus->requestAuthorisation([&](FocusAuthorisation answer) {
            QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
            QCOMPARE(focus->authorisation(), answer);
            answers.push_back(answer);
        });
        QVERIFY(answers.empty());
        grant(*focus);
        QTRY_COMPARE_WITH_TIMEOUT(answers, std::vector({ FocusAuthorisation::authorised }), patience);
        QCoreApplication::processEvents();
        QCOMPARE(answers.size(), std::size_t(1));
    }

    void nothingIsAnsweredAfterItsEnd()
    {
        auto focus = makeFocus();
        int answers = 0;
        focus->requestNotificationPermission([&](const Result<bool>&) { ++answers; });
        focus->requestAuthorisation([&](FocusAuthorisation) { ++answers; });
        focus.reset();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QCOMPARE(answers, 0);
    }
};

} // namespace orvanta::testing
