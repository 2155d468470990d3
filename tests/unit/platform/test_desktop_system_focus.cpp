#include "platform/linux/desktop_system_focus.h"

#include "support/contracts/system_focus_contract.h"
#include "support/do_not_disturb.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 15'000;

/// Waits for an answer, of whatever kind, from `service`: it comes after those to everything that was asked before.
void askAndWait(const QString& service, const QString& path)
{
    const auto question = QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
    QDBusPendingCallWatcher answer(QDBusConnection::sessionBus().asyncCall(question));
    QTRY_VERIFY_WITH_TIMEOUT(answer.isFinished(), patience);
    QCoreApplication::processEvents();
}

/// Handles what the bus has to say until now.
void settle()
{
    askAndWait(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s);
}

/// The same, and what the notification service has to say to the questions that follow from it.
void settleWithNotifications()
{
    settle();
    askAndWait(u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s);
}

} // namespace

class TestGnomeFocus : public SystemFocusContract {
    Q_OBJECT

    std::unique_ptr<SystemFocus> makeFocus() override { return std::make_unique<DesktopSystemFocus>(); }
    void turn(SystemFocus&, bool isOn) override { QVERIFY(setShowBanners(!isOn)); }

private Q_SLOTS:
    void init()
    {
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        QVERIFY(setShowBanners(true));
        const DesktopSystemFocus listening;
        QTRY_COMPARE_WITH_TIMEOUT(listening.isFocused(), std::optional(false), patience);
    }
    void cleanup()
    {
        qunsetenv("XDG_CURRENT_DESKTOP");
        QVERIFY(setShowBanners(true));
    }

    void whatIsOnAtTheStartIsKnownAtOnce()
    {
        const DesktopSystemFocus listening;
        QVERIFY(setShowBanners(false));
        QTRY_COMPARE_WITH_TIMEOUT(listening.isFocused(), std::optional(true), patience);
        QCOMPARE(DesktopSystemFocus().isFocused(), std::optional(true));
    }

    void theSettingOfAnotherDesktopDoesNotCount()
    {
        const DesktopSystemFocus gnome;
        QVERIFY(setShowBanners(false));
        QTRY_COMPARE_WITH_TIMEOUT(gnome.isFocused(), std::optional(true), patience);
        qputenv("XDG_CURRENT_DESKTOP", "i3");
        const DesktopSystemFocus other;
        settle();
        QCOMPARE(other.isFocused(), std::optional<bool>());
        QCOMPARE(other.authorisation(), FocusAuthorisation::denied);
    }

    void theShellOnTheBusCountsWhateverTheDesktopIsCalled()
    {
        qunsetenv("XDG_CURRENT_DESKTOP");
        const DesktopSystemFocus focus;
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        DoNotDisturb shell(u"gnome"_s);
        QVERIFY(shell.isReady());
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
        QVERIFY(shell.obeys("on"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        QVERIFY(shell.obeys("leave"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.authorisation(), FocusAuthorisation::denied, patience);
    }
};

/// The desktops whose notification service is asked on the bus: one run for each kind.
class TestFocusOnTheBus : public SystemFocusContract {
    Q_OBJECT

public:
    explicit TestFocusOnTheBus(QString kind) : m_kind(std::move(kind)) { }

private:
    std::unique_ptr<SystemFocus> makeFocus() override { return std::make_unique<DesktopSystemFocus>(); }
    void turn(SystemFocus&, bool isOn) override { QVERIFY(m_service->obeys(isOn ? "on" : "off")); }

private Q_SLOTS:
    void init()
    {
        m_service = std::make_unique<DoNotDisturb>(m_kind);
        QVERIFY(m_service->isReady());
    }
    void cleanup() { m_service.reset(); }

    void whatIsOnAtTheStartIsKnown()
    {
        QVERIFY(m_service->obeys("on"));
        const DesktopSystemFocus focus;
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        QCOMPARE(focus.authorisation(), FocusAuthorisation::authorised);
    }

    void whatWasNeverTouchedIsOff()
    {
        const DesktopSystemFocus focus;
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
        QVERIFY(m_service->obeys("on"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        QVERIFY(m_service->obeys("forget"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
    }

    void aServiceThatAppearsLaterIsPickedUpAndOneThatGoesNoLongerCounts()
    {
        QVERIFY(m_service->obeys("on"));
        QVERIFY(m_service->obeys("leave"));
        const DesktopSystemFocus focus;
        settle();
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        for (int round = 0; round < 2; ++round) {
            QVERIFY(m_service->obeys("return"));
            QTRY_COMPARE_WITH_TIMEOUT(focus.authorisation(), FocusAuthorisation::authorised, patience);
            QCOMPARE(focus.isFocused(), std::optional(true));
            QVERIFY(m_service->obeys("leave"));
            QTRY_COMPARE_WITH_TIMEOUT(focus.authorisation(), FocusAuthorisation::denied, patience);
        }
    }

    void aServiceThatEndsWithoutAWordNoLongerCounts()
    {
        const DesktopSystemFocus focus;
        QVERIFY(m_service->obeys("on"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        m_service.reset();
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional<bool>(), patience);
    }

    void aServiceThatHangsKeepsItsLastStateAndHoldsNobodyUp()
    {
        const DesktopSystemFocus focus;
        QVERIFY(m_service->obeys("on"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        m_service->pause();
        settle();
        QCOMPARE(focus.isFocused(), std::optional(true));
        m_service->resume();
        QVERIFY(m_service->obeys("off"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
    }

    void anotherServiceInItsPlaceIsAskedAnew()
    {
        QVERIFY(m_service->obeys("on"));
        const DesktopSystemFocus focus;
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        QVERIFY(m_service->obeys("leave"));
        DoNotDisturb successor(m_kind);
        QVERIFY(successor.isReady());
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
    }

private:
    QString m_kind;
    std::unique_ptr<DoNotDisturb> m_service;
};

class TestFocusOfOddDesktops : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aDesktopWithoutAnyIsNotAuthorised()
    {
        const DesktopSystemFocus focus;
        settle();
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        QCOMPARE(focus.isFocused(), std::optional<bool>());
    }

    void aServiceWithoutDoNotDisturbIsNone()
    {
        DoNotDisturb plain(u"plain"_s);
        QVERIFY(plain.isReady());
        const DesktopSystemFocus focus;
        settleWithNotifications();
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        QCOMPARE(focus.isFocused(), std::optional<bool>());
    }

    void theSettingsOfXfceWithoutItsNotificationsDoNotCount()
    {
        DoNotDisturb xfconf(u"xfconf"_s);
        QVERIFY(xfconf.isReady());
        QVERIFY(xfconf.obeys("on"));
        const DesktopSystemFocus focus;
        DoNotDisturb other(u"dunst"_s);
        QVERIFY(other.isReady());
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
        QVERIFY(xfconf.obeys("off"));
        QVERIFY(xfconf.obeys("on"));
        settleWithNotifications();
        QCOMPARE(focus.isFocused(), std::optional(false));
    }

    void onXfceItsSettingsCountByThemselves()
    {
        qputenv("XDG_CURRENT_DESKTOP", "XFCE");
        DoNotDisturb xfconf(u"xfconf"_s);
        QVERIFY(xfconf.isReady());
        QVERIFY(xfconf.obeys("on"));
        const DesktopSystemFocus focus;
        qunsetenv("XDG_CURRENT_DESKTOP");
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
    }

    void eitherOfTwoCounts()
    {
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        QVERIFY(setShowBanners(true));
        const DesktopSystemFocus focus;
        qunsetenv("XDG_CURRENT_DESKTOP");
        DoNotDisturb dunst(u"dunst"_s);
        QVERIFY(dunst.isReady());
        QVERIFY(dunst.obeys("on"));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        const DesktopSystemFocus gnome;
        qunsetenv("XDG_CURRENT_DESKTOP");
        QVERIFY(dunst.obeys("leave"));
        QVERIFY(setShowBanners(false));
        QTRY_COMPARE_WITH_TIMEOUT(gnome.isFocused(), std::optional(true), patience);
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(true), patience);
        QVERIFY(dunst.obeys("return"));
        QVERIFY(dunst.obeys("off"));
        settleWithNotifications();
        QCOMPARE(focus.isFocused(), std::optional(true));
        QVERIFY(setShowBanners(true));
        QTRY_COMPARE_WITH_TIMEOUT(focus.isFocused(), std::optional(false), patience);
    }

    void noServiceIsEverStarted()
    {
        // The bus would start it for anybody who asked without care.
        const QDir services(qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/dbus-1/services"_s);
        QVERIFY(services.mkpath(u"."_s));
        const QString mark = QDir(qEnvironmentVariable("HOME")).filePath(u"started"_s);
        const QStringList names { u"org.freedesktop.Notifications"_s, u"org.xfce.Xfconf"_s, u"org.xfce.Notifyd"_s, u"org.erikreider.swaync.cc"_s,
            u"org.gnome.Shell"_s };
        for (const QString& name : names) {
            QFile file(services.filePath(name + u".service"_s));
            QVERIFY(file.open(QFile::WriteOnly));
            file.write("[D-BUS Service]\nName=" + name.toUtf8() + "\nExec=/usr/bin/touch " + QFile::encodeName(mark) + "\n");
        }
        QProcess reload;
        reload.start(u"gdbus"_s,
            { u"call"_s, u"--session"_s, u"--dest"_s, u"org.freedesktop.DBus"_s, u"--object-path"_s, u"/org/freedesktop/DBus"_s, u"--method"_s,
                u"org.freedesktop.DBus.ReloadConfig"_s });
        QVERIFY(reload.waitForFinished(patience) && reload.exitCode() == 0);
        qputenv("XDG_CURRENT_DESKTOP", "XFCE");
        const DesktopSystemFocus focus;
        qunsetenv("XDG_CURRENT_DESKTOP");
        settle();
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
        for (const QString& name : names)
            QVERIFY(QFile::remove(services.filePath(name + u".service"_s)));
        QVERIFY(!QFile::exists(mark));
    }
};

int main(int argc, char** argv)
{
    // Driven by the command line program from outside, without the daemon of the usual backend.
    qputenv("GSETTINGS_BACKEND", "keyfile");
    qunsetenv("XDG_CURRENT_DESKTOP");
    QCoreApplication application(argc, argv);
    TestGnomeFocus gnome;
    TestFocusOnTheBus plasma(u"kde"_s);
    TestFocusOnTheBus dunst(u"dunst"_s);
    TestFocusOnTheBus xfce(u"xfce"_s);
    TestFocusOnTheBus sway(u"swaync"_s);
    TestFocusOfOddDesktops odd;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &gnome, &plasma, &dunst, &xfce, &sway, &odd })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_desktop_system_focus.moc"
