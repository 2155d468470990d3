#pragma once

#include "platform/running_applications.h"

#include <QObject>
#include <QTest>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta::testing {

/// What every RunningApplications does, on a desktop where two applications and one without identifier run, the first of
/// them with two windows.
class RunningApplicationsContract : public QObject {
    Q_OBJECT

protected:
    enum class Running { first, second, nameless };

    /// A desktop as above, with nothing hidden. Called anew for each test.
    virtual std::unique_ptr<RunningApplications> makeApplications() = 0;

    /// The user brings the application to the front. It is there when this returns.
    virtual void bringToFront(RunningApplications& applications, Running application) = 0;

    /// No application has the keyboard any more. It need not be so yet when this returns.
    virtual void leaveNothingInFront(RunningApplications& applications) = 0;

    /// Whether none of the application's windows is on screen.
    virtual bool isHidden(RunningApplications& applications, Running application) = 0;

    [[nodiscard]] virtual QString identifierOf(Running application) const = 0;
    [[nodiscard]] virtual QString nameOf(Running application) const = 0;

private:
    static std::vector<RunningApplication> bearing(const std::vector<RunningApplication>& applications, const std::optional<QString>& identifier)
    {
        std::vector<RunningApplication> result;
        std::ranges::copy_if(applications, std::back_inserter(result),
            [&identifier](const RunningApplication& application) { return application.bundleIdentifier == identifier; });
        return result;
    }

    static std::optional<QString> frontIdentifier(RunningApplications& applications)
    {
        const auto front = applications.frontmost();
        return front ? front->bundleIdentifier : std::nullopt;
    }

    /// Between two windows a window system may say for a moment that none is in front, more than once.
    static bool comesToTheFront(RunningApplications& applications, const QString& identifier)
    {
        return QTest::qWaitFor([&] { return frontIdentifier(applications) == identifier; }, 10000);
    }

private Q_SLOTS:
    void eachApplicationIsListedOnceWithItsIdentifierAndName()
    {
        const auto applications = makeApplications();
        const std::vector<RunningApplication> all = applications->all();
        for (const Running application : { Running::first, Running::second }) {
            const auto found = bearing(all, identifierOf(application));
            QCOMPARE(found.size(), std::size_t(1));
            QCOMPARE(found.front().localizedName, std::optional(nameOf(application)));
            QCOMPARE(found.front().activationPolicy, ActivationPolicy::regular);
        }
    }

    void theOrderStaysTheSameWhateverIsInFront()
    {
        const auto applications = makeApplications();
        bringToFront(*applications, Running::first);
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::first)));
        const auto before = applications->all();
        bringToFront(*applications, Running::second);
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::second)));
        QVERIFY(applications->all() == before);
    }

    void anApplicationWithoutIdentifierIsListedWithoutOne()
    {
        const auto applications = makeApplications();
        QCOMPARE(bearing(applications->all(), std::nullopt).size(), std::size_t(1));
        bringToFront(*applications, Running::nameless);
        const auto isInFront = [&] {
            const auto front = applications->frontmost();
            return front && !front->bundleIdentifier;
        };
        QVERIFY(QTest::qWaitFor(isInFront, 10000));
    }

    void theOneInFrontIsTheOneThatWasBroughtThere()
    {
        const auto applications = makeApplications();
        for (const Running application : { Running::first, Running::second, Running::first }) {
            bringToFront(*applications, application);
            QVERIFY(comesToTheFront(*applications, identifierOf(application)));
        }
        const auto isCompletelyKnown = [&] {
            const auto front = applications->frontmost();
            return front && front->localizedName == nameOf(Running::first) && front->activationPolicy == ActivationPolicy::regular;
        };
        QVERIFY(QTest::qWaitFor(isCompletelyKnown, 10000));
    }

    void whereNothingIsInFrontThereIsNone()
    {
        const auto applications = makeApplications();
        leaveNothingInFront(*applications);
        QTRY_VERIFY_WITH_TIMEOUT(!applications->frontmost().has_value(), 10000);
    }

    void hidingHidesTheApplicationAndNoOther()
    {
        const auto applications = makeApplications();
        bringToFront(*applications, Running::first);
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::first)));
        applications->hide(identifierOf(Running::first));
        QTRY_VERIFY_WITH_TIMEOUT(isHidden(*applications, Running::first), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(frontIdentifier(*applications) != identifierOf(Running::first), 10000);
        QVERIFY(!isHidden(*applications, Running::second));
        QCOMPARE(bearing(applications->all(), identifierOf(Running::first)).size(), std::size_t(1));
    }

    void aHiddenApplicationComesBackWhenItIsBroughtToTheFront()
    {
        const auto applications = makeApplications();
        applications->hide(identifierOf(Running::first));
        QTRY_VERIFY_WITH_TIMEOUT(isHidden(*applications, Running::first), 10000);
        bringToFront(*applications, Running::first);
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::first)));
    }

    void hidingWhatDoesNotRunChangesNothing()
    {
        const auto applications = makeApplications();
        bringToFront(*applications, Running::second);
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::second)));
        // An identifier is compared exactly.
        applications->hide(identifierOf(Running::second).toUpper());
        applications->hide(QString());
        QVERIFY(comesToTheFront(*applications, identifierOf(Running::second)));
        QVERIFY(!isHidden(*applications, Running::second));
    }
};

} // namespace orvanta::testing
