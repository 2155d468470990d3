#include "platform/linux/wayland/wayland_activation_monitor.h"
#include "platform/linux/wayland/wayland_idle_source.h"
#include "platform/linux/wayland/wayland_running_applications.h"
#include "support/contracts/activation_monitor_contract.h"
#include "support/contracts/idle_source_contract.h"
#include "support/contracts/running_applications_contract.h"
#include "support/wayland_hands.h"

#include <QGuiApplication>
#include <QRasterWindow>
#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// This program's own windows are taken for those of other applications, by what they say of themselves.
const OwnApplication nobody;

/// That is attached: a busy compositor may be asked more than once.
std::shared_ptr<CompositorWindows> attachedWindows()
{
    auto windows = std::make_shared<CompositorWindows>();
    if (!QTest::qWaitFor([&] { return windows->feed() != nullptr; }, 30'000))
        QTest::qFail("nobody tells of the windows", __FILE__, __LINE__);
    return windows;
}

/// The editor's windows are in one process.
enum class EditorWindows { one, two };

/// An editor, a calculator, and this program again, which no desktop entry knows: all Wayland clients.
struct Clients {
    Clients(Hands& hands, EditorWindows windows)
        : nameless(hands, QCoreApplication::applicationFilePath(), { u"--window"_s }, 1)
        , second(hands, u"galculator"_s, {}, 1)
        , first(hands, u"mousepad"_s, editorArguments(windows), windows == EditorWindows::two ? 2 : 1)
    {
    }

    [[nodiscard]] bool areShown() const { return nameless.isShown() && second.isShown() && first.isShown(); }

    [[nodiscard]] QStringList editorArguments(EditorWindows windows) const
    {
        QStringList arguments { u"--opening-mode=window"_s, folder.filePath(u"one.txt"_s) };
        if (windows == EditorWindows::two)
            arguments << folder.filePath(u"two.txt"_s);
        return arguments;
    }

    QTemporaryDir folder;
    Client nameless;
    Client second;
    Client first;
};

} // namespace

class TestWaylandActivationMonitor : public ActivationMonitorContract {
    Q_OBJECT

    Hands& m_hands;
    std::unique_ptr<Clients> m_clients;
    std::vector<std::shared_ptr<CompositorWindows>> m_windows; ///< one for each monitor, which it outlives

    std::unique_ptr<ActivationMonitor> makeMonitor() override
    {
        m_windows.push_back(attachedWindows());
        return std::make_unique<WaylandActivationMonitor>(*m_windows.back(), nobody);
    }
    void bringToFront(ActivationMonitor&, Front application) override
    {
        Client& client = application == Front::first ? m_clients->first : application == Front::second ? m_clients->second : m_clients->nameless;
        QVERIFY(client.bringToFront());
    }
    [[nodiscard]] QString identifierOf(Front application) const override
    {
        return application == Front::first ? u"org.xfce.mousepad.desktop"_s : u"galculator.desktop"_s;
    }

public:
    explicit TestWaylandActivationMonitor(Hands& hands) : m_hands(hands) { }

private Q_SLOTS:
    void initTestCase()
    {
        m_clients = std::make_unique<Clients>(m_hands, EditorWindows::one);
        QVERIFY(m_clients->areShown());
    }
    void cleanup() { m_windows.clear(); }
    void cleanupTestCase() { m_clients.reset(); }
};

class TestWaylandRunningApplications : public RunningApplicationsContract {
    Q_OBJECT

    Hands& m_hands;
    std::unique_ptr<Clients> m_clients;

    Client& client(Running application)
    {
        return application == Running::first ? m_clients->first : application == Running::second ? m_clients->second : m_clients->nameless;
    }
    std::unique_ptr<RunningApplications> makeApplications() override
    {
        for (const Running application : { Running::nameless, Running::second, Running::first })
            (void)client(application).bringToFront();
        return std::make_unique<WaylandRunningApplications>(attachedWindows(), nobody);
    }
    void bringToFront(RunningApplications&, Running application) override { QVERIFY(client(application).bringToFront()); }
    void leaveNothingInFront(RunningApplications&) override { QCOMPARE(m_hands.tell(u"none"_s), QByteArray("done")); }
    bool isHidden(RunningApplications&, Running application) override { return client(application).isHidden(); }
    [[nodiscard]] QString identifierOf(Running application) const override
    {
        return application == Running::first ? u"org.xfce.mousepad.desktop"_s : u"galculator.desktop"_s;
    }
    [[nodiscard]] QString nameOf(Running application) const override { return application == Running::first ? u"Mousepad"_s : u"Galculator"_s; }

public:
    explicit TestWaylandRunningApplications(Hands& hands) : m_hands(hands) { }

private Q_SLOTS:
    void initTestCase()
    {
        m_clients = std::make_unique<Clients>(m_hands, EditorWindows::two);
        QVERIFY(m_clients->areShown());
    }
    void cleanupTestCase() { m_clients.reset(); }
};

class TestWaylandIdleSource : public IdleSourceContract {
    Q_OBJECT

    Hands& m_hands;

    std::unique_ptr<IdleSource> makeSource() override { return std::make_unique<WaylandIdleSource>(); }
    void touch() override { QCOMPARE(m_hands.tell(u"key Shift_L"_s), QByteArray("done")); }

public:
    explicit TestWaylandIdleSource(Hands& hands) : m_hands(hands) { }
};

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(u"--window"_s)) {
        QRasterWindow window;
        window.setTitle(u"Nameless"_s);
        window.show();
        return QGuiApplication::exec();
    }
    Hands hands;
    TestWaylandActivationMonitor monitor(hands);
    TestWaylandRunningApplications applications(hands);
    TestWaylandIdleSource idle(hands);
    return QTest::qExec(&monitor, argc, argv) + QTest::qExec(&applications, argc, argv) + QTest::qExec(&idle, argc, argv);
}
#include "test_wayland_windows.moc"
