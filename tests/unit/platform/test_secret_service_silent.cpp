#include "platform/linux/secret_service.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>

#include <gio/gio.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20000;

/// A call that nobody bounds is given up by the bus after 25 seconds.
constexpr qint64 longestLookUp = 15000;

std::optional<QByteArray> lookUp(qint64& took)
{
    QElapsedTimer timer;
    timer.start();
    auto secret = SecretService().read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s);
    took = timer.elapsed();
    return secret;
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
        QFile service(qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/dbus-1/services/org.freedesktop.secrets.service"_s);
        QVERIFY2(service.open(QIODevice::WriteOnly), qPrintable(service.errorString()));
        service.write("[D-BUS Service]\nName=org.freedesktop.secrets\nExec=/bin/sleep 120\n");
        service.close();
        QVERIFY(!askBus(u"ReloadConfig"_s).isEmpty());
        qint64 took = 0;
        QCOMPARE(lookUp(took), std::nullopt);
        QVERIFY2(took < longestLookUp, qPrintable(QString::number(took)));
        QVERIFY2(took > 1000, "the service was not waited for at all");
    }

    void aServiceThatHasStoppedIsGivenUp()
    {
        // Owns the name and answers nothing.
        QProcess silent;
        silent.start(u"/usr/bin/python3"_s,
            { u"-c"_s,
                u"from gi.repository import Gio, GLib\n"
                u"loop = GLib.MainLoop()\n"
                u"Gio.bus_own_name(Gio.BusType.SESSION, 'org.freedesktop.secrets', Gio.BusNameOwnerFlags.REPLACE, None,\n"
                u"                 lambda *_: print('owned', flush=True), lambda *_: loop.quit())\n"
                u"loop.run()\n"_s });
        QVERIFY2(silent.waitForReadyRead(patience), silent.readAllStandardError().constData());
        QVERIFY(silent.readAllStandardOutput().startsWith("owned"));
        ::kill(static_cast<pid_t>(silent.processId()), SIGSTOP);
        qint64 took = 0;
        const auto secret = lookUp(took);
        ::kill(static_cast<pid_t>(silent.processId()), SIGKILL);
        QVERIFY(silent.waitForFinished(patience));
        QCOMPARE(secret, std::nullopt);
        QVERIFY2(took < longestLookUp, qPrintable(QString::number(took)));
        QVERIFY2(took > 1000, "the service was not waited for at all");
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
        qint64 took = 0;
        QCOMPARE(lookUp(took), std::nullopt);
        ::kill(bus, SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(g_dbus_connection_is_closed(shared), patience);
        QCOMPARE(lookUp(took), std::nullopt);
        QVERIFY2(took < longestLookUp, qPrintable(QString::number(took)));
        g_object_unref(shared);
    }
};

QTEST_GUILESS_MAIN(TestSecretServiceSilent)
#include "test_secret_service_silent.moc"
