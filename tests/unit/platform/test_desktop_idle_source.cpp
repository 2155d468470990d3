#include "platform/linux/desktop_idle_source.h"

#include "support/contracts/idle_source_contract.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QProcess>

#include <future>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// A desktop's idle monitor.
class IdleMonitor : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the bus knows it by this name
    qulonglong GetIdletime() { return 4500; }
};

/// A session's screen saver.
class ScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the bus knows it by this name
    uint GetSessionIdleTime() { return 2000; }
};

/// What the session's services say, asked from a thread of its own: ours answers for them.
std::optional<double> askSession()
{
    auto answer = std::async(std::launch::async, [] {
        std::unique_ptr<BoundedBus> session;
        return idleSecondsFromSession(session);
    });
    if (!QTest::qWaitFor([&answer] { return answer.wait_for(std::chrono::seconds { 0 }) == std::future_status::ready; }, 20'000))
        qFatal("no answer");
    return answer.get();
}

} // namespace

class TestDesktopIdleSource : public IdleSourceContract {
    Q_OBJECT

    std::unique_ptr<IdleSource> makeSource() override { return std::make_unique<DesktopIdleSource>(); }
    void touch() override { QCOMPARE(QProcess::execute(u"xdotool"_s, { u"key"_s, u"Shift_L"_s }), 0); }

private Q_SLOTS:
    void whereNoServiceOfTheSessionKnowsThereIsNoAnswer() { QVERIFY(!askSession().has_value()); }

    void theServicesOfTheSessionAreAskedInTurn()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        ScreenSaver saver;
        QVERIFY(bus.registerObject(u"/org/freedesktop/ScreenSaver"_s, &saver, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(u"org.freedesktop.ScreenSaver"_s));
        QCOMPARE(askSession(), std::optional(2.0));
        IdleMonitor monitor;
        QVERIFY(bus.registerObject(u"/org/gnome/Mutter/IdleMonitor/Core"_s, &monitor, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(u"org.gnome.Mutter.IdleMonitor"_s));
        QCOMPARE(askSession(), std::optional(4.5));
        QVERIFY(bus.unregisterService(u"org.gnome.Mutter.IdleMonitor"_s));
        QCOMPARE(askSession(), std::optional(2.0));
        QVERIFY(bus.unregisterService(u"org.freedesktop.ScreenSaver"_s));
    }
};

QTEST_MAIN(TestDesktopIdleSource)
#include "test_desktop_idle_source.moc"
