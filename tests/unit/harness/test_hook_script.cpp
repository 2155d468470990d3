#include "harness/hook_script.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestHookScript : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theScriptIsTheseEightLines()
    {
        const QList<QByteArray> lines {
            "#!/bin/sh",
            "# Installed and repaired by Orvanta Focus. Deliberately fail open.",
            "/usr/bin/curl --silent --max-time 0.25 \\",
            "  --request POST http://127.0.0.1:47653/events \\",
            "  --header 'Content-Type: application/json' \\",
            "  --header \"X-Orvanta-Harness: $1\" \\",
            "  --data-binary @- >/dev/null 2>&1 || true",
            "exit 0",
        };
        QCOMPARE(hookScript(), lines.join('\n'));
        QCOMPARE(hookScript().size(), 299);
        QCOMPARE(hookScriptMode, std::uint16_t { 493 });
    }

    void theCommandNamesTheScriptAndTheAgent()
    {
        const QString path = u"/Users/ann/Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh"_s;
        QCOMPARE(hookCommand(path, AIHarness::claude),
            u"/bin/sh '/Users/ann/Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh' claude"_s);
        QCOMPARE(hookCommand(u"/a'b"_s, AIHarness::codex), u"/bin/sh '/a'\\''b' codex"_s);
    }

    void anyShellRunsTheCommandWhateverTheHomeFolderIsCalled_data()
    {
        QTest::addColumn<QStringList>("shell");
        QTest::addColumn<QString>("home");
        const QList<QStringList> shells { { u"/bin/dash"_s }, { u"/bin/bash"_s }, { u"/bin/busybox"_s, u"sh"_s } };
        const QStringList homes { u"plain"_s, u"with spaces"_s, u"O'Brien"_s, u"''"_s, u"a\"b$HOME`id`\\"_s, u"line\nbreak"_s,
            u"\u00e4\u4e2d\U0001F451"_s, u"*?[x]"_s, u"-n"_s, u"$(exit 3);exit 4"_s };
        for (const QStringList& shell : shells) {
            for (const QString& home : homes)
                QTest::addRow("%s: %s", qPrintable(shell.first()), home.toUtf8().toPercentEncoding().constData()) << shell << home;
        }
    }

    void anyShellRunsTheCommandWhateverTheHomeFolderIsCalled()
    {
        QFETCH(const QStringList, shell);
        QFETCH(const QString, home);
        const QTemporaryDir folder;
        const QString inside = folder.filePath(home);
        QVERIFY(QDir().mkpath(inside));
        // In place of the real one, so that nothing is posted: it tells that it ran, and with what.
        QFile script(inside + u"/script"_s);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("printf 'ran with %s: ' \"$*\"; cat\n");
        script.close();

        QProcess process;
        QString command = hookCommand(script.fileName(), AIHarness::claude);
        QVERIFY(command.startsWith(u"/bin/sh "_s));
        command.replace(0, 7, shell.join(u' '));
        process.start(shell.first(), shell.sliced(1) + QStringList { u"-c"_s, command });
        QVERIFY(process.waitForStarted());
        process.write("payload");
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.readAllStandardOutput(), "ran with claude: payload"_ba);
        QCOMPARE(process.exitCode(), 0);
    }

    void theScriptIsValidInEveryShell()
    {
        const QTemporaryDir folder;
        QFile script(folder.filePath(u"script"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(hookScript());
        script.close();
        for (const QStringList& shell :
            { QStringList { u"/bin/dash"_s }, QStringList { u"/bin/bash"_s }, QStringList { u"/bin/busybox"_s, u"sh"_s } })
            QCOMPARE(QProcess::execute(shell.first(), shell.sliced(1) + QStringList { u"-n"_s, script.fileName() }), 0);
    }
};

QTEST_GUILESS_MAIN(TestHookScript)
#include "test_hook_script.moc"
