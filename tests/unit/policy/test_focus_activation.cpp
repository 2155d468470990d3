#include "app/policy/focus_activation.h"

#include <QTest>

using namespace orvanta;

class TestFocusActivation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isActiveWhenEitherSourceIs()
    {
        QVERIFY(!FocusActivation::isActive(false, false));
        QVERIFY(FocusActivation::isActive(false, true));
        QVERIFY(FocusActivation::isActive(true, false));
        QVERIFY(FocusActivation::isActive(true, true));
    }

    void labelNamesTheSources()
    {
        QCOMPARE(focusStatusLabelText(false, false), QStringLiteral("Focus inactive"));
        QCOMPARE(focusStatusLabelText(false, true), QStringLiteral("Focus active \u00B7 macOS Focus"));
        QCOMPARE(focusStatusLabelText(true, false), QStringLiteral("Focus active \u00B7 Orvanta task"));
        QCOMPARE(focusStatusLabelText(true, true), QStringLiteral("Focus active \u00B7 macOS Focus + Orvanta task"));
    }

    void onlyAChangeOfValueCountsAsTransition()
    {
        QVERIFY(!FocusStateTransition::counts(false, false));
        QVERIFY(!FocusStateTransition::counts(true, true));
        QVERIFY(FocusStateTransition::counts(false, true));
        QVERIFY(FocusStateTransition::counts(true, false));
    }
};

QTEST_GUILESS_MAIN(TestFocusActivation)
#include "test_focus_activation.moc"
