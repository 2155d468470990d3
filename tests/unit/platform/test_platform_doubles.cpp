#include "support/contracts/activation_monitor_contract.h"
#include "support/contracts/running_applications_contract.h"
#include "support/contracts/screens_contract.h"
#include "support/fake_activation_monitor.h"
#include "support/fake_running_applications.h"
#include "support/fake_screens.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestFakeActivationMonitor : public ActivationMonitorContract {
    Q_OBJECT

    std::unique_ptr<ActivationMonitor> makeMonitor() override { return std::make_unique<FakeActivationMonitor>(); }
    void bringToFront(ActivationMonitor& monitor, Front application) override
    {
        static_cast<FakeActivationMonitor&>(monitor).activate(
            application == Front::nameless ? std::nullopt : std::optional(identifierOf(application)));
    }
    [[nodiscard]] QString identifierOf(Front application) const override
    {
        return application == Front::first ? u"first.desktop"_s : u"second.desktop"_s;
    }

private Q_SLOTS:
    void itTellsHowOftenItIsObserved()
    {
        FakeActivationMonitor monitor;
        QVERIFY(!monitor.isObserved());
        auto observer = monitor.observe([](const std::optional<QString>&) { });
        QVERIFY(monitor.isObserved());
        observer = {};
        QVERIFY(!monitor.isObserved());
        QCOMPARE(monitor.observations(), 1);
    }
};

class TestFakeRunningApplications : public RunningApplicationsContract {
    Q_OBJECT

    std::unique_ptr<RunningApplications> makeApplications() override
    {
        auto applications = std::make_unique<FakeRunningApplications>(m_log);
        applications->start({ .bundleIdentifier = std::nullopt, .localizedName = u"xclock"_s });
        for (const Running application : { Running::second, Running::first })
            applications->start({ .bundleIdentifier = identifierOf(application), .localizedName = nameOf(application) });
        return applications;
    }
    void bringToFront(RunningApplications& applications, Running application) override
    {
        static_cast<FakeRunningApplications&>(applications)
            .bringToFront(application == Running::nameless ? std::nullopt : std::optional(identifierOf(application)));
    }
    void leaveNothingInFront(RunningApplications& applications) override
    {
        static_cast<FakeRunningApplications&>(applications).leaveNothingInFront();
    }
    bool isHidden(RunningApplications& applications, Running application) override
    {
        return static_cast<FakeRunningApplications&>(applications).isHidden(identifierOf(application));
    }
    [[nodiscard]] QString identifierOf(Running application) const override
    {
        return application == Running::first ? u"first.desktop"_s : u"second.desktop"_s;
    }
    [[nodiscard]] QString nameOf(Running application) const override { return application == Running::first ? u"First"_s : u"Second"_s; }

    CallLog m_log;

private Q_SLOTS:
    void everyWishToHideIsLogged()
    {
        CallLog log;
        FakeRunningApplications applications(log);
        applications.hide(u"one.desktop"_s);
        applications.hide(u"two.desktop"_s);
        QCOMPARE(log.calls, QStringList({ u"hide one.desktop"_s, u"hide two.desktop"_s }));
    }
};

class TestFakeScreens : public ScreensContract {
    Q_OBJECT

    std::unique_ptr<Screens> makeScreens() override { return std::make_unique<FakeScreens>(std::vector<Screen> { m_left, m_right }); }
    void disconnectRight(Screens& screens) override { static_cast<FakeScreens&>(screens).disconnect(m_right.number); }
    void connectRight(Screens& screens) override { static_cast<FakeScreens&>(screens).connect(m_right); }
    void disconnectAll(Screens& screens) override { static_cast<FakeScreens&>(screens).disconnectAll(); }
    void putKeyWindow(Screens& screens, const QRect& frame) override
    {
        static_cast<FakeScreens&>(screens).setKeyWindowScreen(frame == m_left.frame ? m_left.number : m_right.number);
    }
    [[nodiscard]] std::vector<QRect> frames() const override { return { m_left.frame, m_right.frame }; }

    const Screen m_left { .number = 7, .frame = QRect(0, 0, 960, 1080) };
    const Screen m_right { .number = 9, .frame = QRect(960, 0, 960, 1080) };
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TestFakeActivationMonitor activationMonitor;
    TestFakeRunningApplications runningApplications;
    TestFakeScreens screens;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &activationMonitor, &runningApplications, &screens })
        failures += QTest::qExec(test, argc, argv);
    return failures;
}

#include "test_platform_doubles.moc"
