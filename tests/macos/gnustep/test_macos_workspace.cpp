#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/fake_workspace.h"
#include "platform/macos/appkit_screens.h"
#include "platform/macos/workspace_activation_monitor.h"
#include "platform/macos/workspace_motion_preference.h"
#include "platform/macos/workspace_running_applications.h"
#include "platform/macos/workspace_url_opener.h"
#include "support/contracts/activation_monitor_contract.h"
#include "support/contracts/motion_preference_contract.h"
#include "support/contracts/running_applications_contract.h"
#include "support/contracts/screens_contract.h"
#include "support/contracts/url_opener_contract.h"

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// Two applications and one without identifier.
void startThree()
{
    mac::begin();
    mac::startApplication({ .identifier = u"com.example.first"_s, .name = u"First"_s });
    mac::startApplication({ .identifier = u"com.example.second"_s, .name = u"Second"_s });
    mac::startApplication({ .identifier = std::nullopt, .name = std::nullopt });
}

} // namespace

class TestWorkspaceActivationMonitor : public ActivationMonitorContract {
    Q_OBJECT

    std::unique_ptr<ActivationMonitor> makeMonitor() override
    {
        startThree();
        return std::make_unique<WorkspaceActivationMonitor>();
    }
    void bringToFront(ActivationMonitor& /*monitor*/, Front application) override { mac::activateApplication(static_cast<std::size_t>(application)); }
    [[nodiscard]] QString identifierOf(Front application) const override
    {
        return application == Front::first ? u"com.example.first"_s : u"com.example.second"_s;
    }

private Q_SLOTS:
    void activationsOfAnybodyAreObservedOnTheMainQueue()
    {
        const auto monitor = makeMonitor();
        const auto observer = monitor->observe([](const std::optional<QString>&) { });
        QCOMPARE(mac::calls(), QStringList({ u"observe NSWorkspaceDidActivateApplicationNotification of anybody on the main queue"_s }));
    }

    void anActivationOfNoApplicationIsToldAsNone()
    {
        const auto monitor = makeMonitor();
        Told told;
        const auto observer = monitor->observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        mac::activateNobody();
        mac::activateSomethingElse();
        QVERIFY(told.empty());
        QTRY_COMPARE(told, Told({ std::nullopt, std::nullopt }));
    }

    void whatIsStillUnderWayWhenTheObservationEndsIsNotTold()
    {
        const auto monitor = makeMonitor();
        int told = 0;
        auto observer = monitor->observe([&](const std::optional<QString>&) { ++told; });
        bringToFront(*monitor, Front::first);
        observer = {};
        int later = 0;
        const auto other = monitor->observe([&](const std::optional<QString>&) { ++later; });
        bringToFront(*monitor, Front::second);
        QTRY_COMPARE(later, 1);
        QCOMPARE(told, 0);
    }
};

class TestWorkspaceRunningApplications : public RunningApplicationsContract {
    Q_OBJECT

    std::unique_ptr<RunningApplications> makeApplications() override
    {
        startThree();
        return std::make_unique<WorkspaceRunningApplications>();
    }
    void bringToFront(RunningApplications& /*applications*/, Running application) override
    {
        mac::activateApplication(static_cast<std::size_t>(application));
    }
    void leaveNothingInFront(RunningApplications& /*applications*/) override { mac::leaveNoApplicationInFront(); }
    bool isHidden(RunningApplications& /*applications*/, Running application) override
    {
        return mac::isApplicationHidden(static_cast<std::size_t>(application));
    }
    [[nodiscard]] QString identifierOf(Running application) const override
    {
        return application == Running::first ? u"com.example.first"_s : u"com.example.second"_s;
    }
    [[nodiscard]] QString nameOf(Running application) const override { return application == Running::first ? u"First"_s : u"Second"_s; }

private Q_SLOTS:
    void everyInstanceIsHiddenInTheSystemsOrder()
    {
        mac::begin();
        for (const QString& name : { u"one"_s, u"other"_s, u"two"_s, u"three"_s })
            mac::startApplication({ .identifier = name == u"other"_s ? u"com.example.other"_s : u"com.example.game"_s, .name = name });
        WorkspaceRunningApplications applications;
        applications.hide(u"com.example.game"_s);
        QCOMPARE(mac::calls(),
            QStringList({ u"runningApplicationsWithBundleIdentifier com.example.game"_s, u"hide one"_s, u"hide two"_s, u"hide three"_s }));
    }

    void onlyPolicyZeroIsRegular()
    {
        mac::begin();
        for (const int policy : { 0, 1, 2 })
            mac::startApplication({ .identifier = u"com.example.%1"_s.arg(policy), .name = u"One"_s, .policy = policy });
        std::vector<ActivationPolicy> policies;
        for (const RunningApplication& application : WorkspaceRunningApplications().all())
            policies.push_back(application.activationPolicy);
        QCOMPARE(policies, std::vector({ ActivationPolicy::regular, ActivationPolicy::accessory, ActivationPolicy::accessory }));
    }
};

class TestAppKitScreens : public ScreensContract {
    Q_OBJECT

    std::unique_ptr<Screens> makeScreens() override
    {
        mac::begin();
        mac::connectScreens({ m_left, m_right });
        return std::make_unique<AppKitScreens>();
    }
    void disconnectRight(Screens& /*screens*/) override { mac::connectScreens({ m_left }); }
    void connectRight(Screens& /*screens*/) override { mac::connectScreens({ m_left, m_right }); }
    void disconnectAll(Screens& /*screens*/) override { mac::connectScreens({}); }
    void putKeyWindow(Screens& /*screens*/, const QRect& frame) override { mac::putKeyWindowOnScreen(frame == m_left.frame ? 0 : 1); }
    [[nodiscard]] std::vector<QRect> frames() const override { return { m_left.frame, m_right.frame }; }

    const mac::FakeScreen m_left { .number = 0x2b28b0a1, .frame = QRect(0, 0, 1512, 982) };
    const mac::FakeScreen m_right { .number = 0xfb000002, .frame = QRect(1512, -98, 1920, 1080) };

private Q_SLOTS:
    void aScreenWithoutNumberIsTheMainOneWithNumberZero()
    {
        mac::begin();
        mac::connectScreens({ { .number = std::nullopt, .frame = m_left.frame }, m_right });
        const AppKitScreens screens;
        QCOMPARE(screens.main(), std::optional(Screen { .number = 0, .frame = m_left.frame }));
        QCOMPARE(screens.all(), std::vector<Screen>({ { .number = *m_right.number, .frame = m_right.frame } }));
    }
};

class TestWorkspaceMotionPreference : public MotionPreferenceContract {
    Q_OBJECT

    std::unique_ptr<MotionPreference> makePreference() override
    {
        mac::begin();
        return std::make_unique<WorkspaceMotionPreference>();
    }
    void turn(MotionPreference& /*preference*/, bool reduceMotion) override { mac::turnReduceMotion(reduceMotion); }

private Q_SLOTS:
    void anotherDisplayOptionTellsNobody()
    {
        const auto preference = makePreference();
        std::vector<bool> told;
        const auto observer = preference->observe([&](bool reduceMotion) { told.push_back(reduceMotion); });
        mac::turnAnotherDisplayOption();
        mac::turnReduceMotion(true);
        QTRY_COMPARE(told, std::vector<bool>({ true }));
    }
};

class TestWorkspaceUrlOpener : public UrlOpenerContract {
    Q_OBJECT

    std::unique_ptr<UrlOpener> makeOpener() override
    {
        mac::begin();
        return std::make_unique<WorkspaceUrlOpener>();
    }
    static QStringList opened(QStringView scheme)
    {
        QStringList addresses;
        for (const QString& call : mac::calls()) {
            if (call.startsWith(u"openURL "_s) && call.sliced(8).startsWith(scheme))
                addresses << call.sliced(8);
        }
        return addresses;
    }
    QStringList pages(UrlOpener& /*opener*/) override { return opened(u"http"); }
    int settings(UrlOpener& /*opener*/) override { return static_cast<int>(opened(u"x-apple.systempreferences:").size()); }

private Q_SLOTS:
    void addressesAreHandedToTheWorkspaceAsTheyAre()
    {
        mac::begin();
        WorkspaceUrlOpener opener;
        opener.open(QUrl(u"https://orvanta.example/focus/blocked"_s));
        opener.open(QUrl(u"x-apple.systempreferences:com.apple.Network-Settings.extension"_s));
        opener.open(QUrl(u"https://orvanta.example/a b?q=\u00e4"_s));
        QCOMPARE(mac::calls(),
            QStringList({ u"openURL https://orvanta.example/focus/blocked"_s,
                u"openURL x-apple.systempreferences:com.apple.Network-Settings.extension"_s, u"openURL https://orvanta.example/a%20b?q=%C3%A4"_s }));
    }
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TestWorkspaceActivationMonitor activationMonitor;
    TestWorkspaceRunningApplications runningApplications;
    TestAppKitScreens screens;
    TestWorkspaceMotionPreference motion;
    TestWorkspaceUrlOpener opener;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &activationMonitor, &runningApplications, &screens, &motion, &opener })
        failures += QTest::qExec(test, argc, argv);
    return failures;
}

#include "test_macos_workspace.moc"
