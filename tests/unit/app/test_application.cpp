#include "app/application.h"

#include <QTest>
#include <QTimer>
#include <QWindow>

using namespace orvanta;

namespace {

class WindowThatStays : public QWindow {
protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::Close)
            return QWindow::event(event);
        ++closings;
        event->ignore();
        return true;
    }

public:
    int closings = 0;
};

} // namespace

class TestApplication : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aWindowThatCannotBeClosedDoesNotKeepTheProgramFromEnding()
    {
        WindowThatStays window;
        window.show();
        bool wasRunning = false;
        QTimer::singleShot(0, qApp, [&wasRunning] {
            wasRunning = true;
            QGuiApplication::quit();
        });
        QCOMPARE(QGuiApplication::exec(), EXIT_SUCCESS);
        QVERIFY(wasRunning);
        QCOMPARE(window.closings, 0);
        QVERIFY(window.isVisible());
    }
};

int main(int argc, char** argv)
{
    Application application(argc, argv);
    TestApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_application.moc"
