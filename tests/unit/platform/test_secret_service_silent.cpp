#include "platform/linux/secret_service.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>

#include <gio/gio.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60000;

std::optional<QByteArray> lookUp()
{
    return SecretService().read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s);
}

/// A call to the keyring that nobody bounds: it waits for as long as the bus lets it.
class UnboundedCall {
public:
    UnboundedCall()
    {
        m_gdbus.start(u"gdbus"_s,
            { u"call"_s, u"--session"_s, u"--dest=org.freedesktop.secrets"_s, u"--object-path=/org/freedesktop/secrets"_s,
                u"--method=org.freedesktop.DBus.Peer.Ping"_s });
    }

    ~UnboundedCall()
    {
        m_gdbus.kill();
        m_gdbus.waitForFinished(patience);
    }

    [[nodiscard]] bool isWaiting() { return !m_gdbus.waitForFinished(0) && m_gdbus.state() == QProcess::Running; }

private:
    QProcess m_gdbus;
};

/// Empty if the process says nothing more. A line may come in pieces.
QByteArray nextLine(QProcess& process)
{
    while (!process.canReadLine() && process.waitForReadyRead(patience)) { }
    return process.readLine();
}

QByteArray askBus(const QString& method, const QString& argument = {})
{
    QProcess gdbus;
    QStringList arguments { u"call"_s, u"--session"_s, u"--dest=org.freedesktop.DBus"_s, u"--object-path=/org/freedesktop/DBus"_s,
        u"--method=org.freedesktop.DBus."_s + method };
    if (!argument.isEmpty())
        arguments.append(argument);
    gdbus.start(u"gdbus"_s, arguments);
    return gdbus.waitForFinished(patience) && gdbus.exitCode() == 0 ? gdbus.readAllStandardOutput() : QByteArray();
}

} // namespace

/// A keyring that should answer and does not, and a bus that goes away.
class TestSecretServiceSilent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aServiceThatTheBusStartsAndThatNeverAppearsIsGivenUp()
    {
        const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
        const QString started = runtimeFolder + u"/the-keyring-was-started"_s;
        QFile service(runtimeFolder + u"/dbus-1/services/org.freedesktop.secrets.service"_s);
        QVERIFY2(service.open(QIODevice::WriteOnly), qPrintable(service.errorString()));
        service.write("[D-BUS Service]\nName=org.freedesktop.secrets\nExec=/bin/sh -c '>" + started.toUtf8() + "; exec sleep 300'\n");
        service.close();
        QVERIFY(!askBus(u"ReloadConfig"_s).isEmpty());
        UnboundedCall peer;
        QCOMPARE(lookUp(), std::nullopt);
        QVERIFY2(peer.isWaiting(), "the look-up waited for as long as the bus does");
        QVERIFY2(QFile::exists(started), "the keyring was not asked at all");
    }

    void aServiceThatHasStoppedIsGivenUp()
    {
        // Owns the name and answers nothing; says what arrives.
        QProcess silent;
        silent.start(u"/usr/bin/python3"_s,
            { u"-c"_s,
                u"from gi.repository import Gio, GLib\n"
                u"loop = GLib.MainLoop()\n"
                u"def asked(*_):\n"
                u"    print('asked', flush=True)\n"
                u"    return GLib.Variant('ao', [])\n"
                u"keyring = Gio.DBusNodeInfo.new_for_xml('<node><interface name=\"org.freedesktop.Secret.Service\">'\n"
                u"    '<property name=\"Collections\" type=\"ao\" access=\"read\"/></interface></node>')\n"
                u"bus = Gio.bus_get_sync(Gio.BusType.SESSION)\n"
                u"bus.register_object('/org/freedesktop/secrets', keyring.interfaces[0], None, asked, None)\n"
                u"Gio.bus_own_name_on_connection(bus, 'org.freedesktop.secrets', Gio.BusNameOwnerFlags.REPLACE,\n"
                u"                               lambda *_: print('owned', flush=True), lambda *_: loop.quit())\n"
                u"loop.run()\n"_s });
        QCOMPARE(nextLine(silent), "owned\n");
        ::kill(static_cast<pid_t>(silent.processId()), SIGSTOP);
        UnboundedCall peer;
        QCOMPARE(lookUp(), std::nullopt);
        QVERIFY2(peer.isWaiting(), "the look-up waited for as long as the bus does");
        ::kill(static_cast<pid_t>(silent.processId()), SIGCONT);
        QCOMPARE(nextLine(silent), "asked\n");
        silent.kill();
        QVERIFY(silent.waitForFinished(patience));
    }

    void theEndOfTheBusIsNotOurs()
    {
        // Other parts of the process, GSettings among them, keep the connection that all share.
        GDBusConnection* shared = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        QVERIFY(shared);
        const QByteArray answer = askBus(u"GetConnectionUnixProcessID"_s, u"org.freedesktop.DBus"_s);
        const QByteArray number = answer.mid(answer.lastIndexOf(' ') + 1);
        const pid_t bus = static_cast<pid_t>(number.left(number.indexOf(',')).toLong());
        QVERIFY2(bus > 1, answer.constData());
        QCOMPARE(lookUp(), std::nullopt);
        ::kill(bus, SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(g_dbus_connection_is_closed(shared), patience);
        QCOMPARE(lookUp(), std::nullopt);
        g_object_unref(shared);
    }
};

QTEST_GUILESS_MAIN(TestSecretServiceSilent)
#include "test_secret_service_silent.moc"
