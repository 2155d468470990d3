#include "platform/linux/desktop_system_focus.h"

#include <QTest>

using namespace orvanta;

/// A session without a bus.
class TestDesktopSystemFocusAbsent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutABusThereIsNoneAndRequestsAreStillAnswered()
    {
        qunsetenv("XDG_CURRENT_DESKTOP");
        DesktopSystemFocus focus;
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        QCOMPARE(focus.isFocused(), std::optional<bool>());
        int answers = 0;
        focus.requestNotificationPermission([&](const Result<bool>&) { ++answers; });
        focus.requestAuthorisation([&](FocusAuthorisation answer) {
            QCOMPARE(answer, FocusAuthorisation::denied);
            ++answers;
        });
        QTRY_COMPARE(answers, 2);
    }
};

QTEST_GUILESS_MAIN(TestDesktopSystemFocusAbsent)
#include "test_desktop_system_focus_absent.moc"
