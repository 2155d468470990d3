#include "localservice/command_line.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

class TestCommandLine : public QObject {
    Q_OBJECT

private:
    template <typename Command>
    static Command parsed(const QStringList& arguments)
    {
        auto invocation = parseCommandLine(arguments);
        if (!invocation)
            qFatal("%s", qPrintable(invocation.error()));
        return std::get<Command>(invocation->command);
    }

private Q_SLOTS:
    void serveListensOnLoopbackUnlessToldOtherwise()
    {
        const auto command = parsed<ServeCommand>({ u"serve"_s });
        QCOMPARE(command.address, QHostAddress(QHostAddress::LocalHost));
        QCOMPARE(command.port, quint16 { 47700 });
        QVERIFY(!command.readyFile && !command.tls);
    }

    void serveTakesItsOptions()
    {
        const QStringList arguments { u"serve"_s, u"--port"_s, u"0"_s, u"--listen=::1"_s, u"--data"_s, u"d"_s, u"--ready-file"_s, u"r"_s,
            u"--certificate"_s, u"c"_s, u"--private-key"_s, u"k"_s };
        const auto command = parsed<ServeCommand>(arguments);
        QCOMPARE(command.port, quint16 { 0 });
        QCOMPARE(command.address, QHostAddress(QHostAddress::LocalHostIPv6));
        QCOMPARE(command.readyFile.value(), u"r"_s);
        QCOMPARE(command.tls.value().certificateFile, u"c"_s);
        QCOMPARE(command.tls.value().privateKeyFile, u"k"_s);
        QCOMPARE(parseCommandLine(arguments)->dataFolder, u"d"_s);
    }

    void tasksAreStartedByTitleAndEndedByNumber()
    {
        QCOMPARE(parsed<TaskStartCommand>({ u"task"_s, u"start"_s, u" Write the report "_s }).title, u"Write the report"_s);
        QCOMPARE(parsed<TaskStartCommand>({ u"task"_s, u"start"_s, u"--"_s, u"--help"_s }).title, u"--help"_s);
        QCOMPARE(parsed<TaskDoneCommand>({ u"task"_s, u"done"_s, u"7"_s }).id.value(), 7);
        QVERIFY(!parsed<TaskDoneCommand>({ u"task"_s, u"done"_s }).id);
    }

    void statusAndKey()
    {
        QVERIFY(parsed<StatusCommand>({ u"status"_s }).form == StatusCommand::Form::text);
        QVERIFY(parsed<StatusCommand>({ u"status"_s, u"--json"_s }).form == StatusCommand::Form::json);
        static_cast<void>(parsed<KeyCommand>({ u"key"_s }));
    }

    void helpNamesEveryCommandAndExitStatus()
    {
        const QString help = parsed<PrintCommand>({ u"serve"_s, u"--help"_s }).text;
        for (const QString& word : { u"serve"_s, u"task start"_s, u"task done"_s, u"status"_s, u"key"_s, u"--port"_s, u"--listen"_s,
                 u"--ready-file"_s, u"--certificate"_s, u"--private-key"_s, u"--data"_s, u"47700"_s, u"Exit status"_s })
            QVERIFY2(help.contains(word), qPrintable(word));
    }

    void theDataFolderFollowsTheXdgDataHome()
    {
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/somewhere/data");
        QCOMPARE(parseCommandLine({ u"key"_s })->dataFolder, u"/somewhere/data/orvanta-service"_s);
        before.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before);
    }

    void refusesAndSaysWhy_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");

        QTest::newRow("nothing") << QStringList {} << u"A command is missing"_s;
        QTest::newRow("unknown command") << QStringList { u"start"_s } << u"There is no command \"start\""_s;
        QTest::newRow("unknown option") << QStringList { u"serve"_s, u"--fast"_s } << u"Unknown option 'fast'."_s;
        QTest::newRow("another command's option") << QStringList { u"status"_s, u"--port"_s, u"1"_s } << u"Unknown option 'port'."_s;
        QTest::newRow("port beyond range") << QStringList { u"serve"_s, u"--port"_s, u"65536"_s } << u"--port must be a number from 0 to 65535"_s;
        QTest::newRow("port in letters") << QStringList { u"serve"_s, u"--port"_s, u"http"_s } << u"--port must be a number from 0 to 65535"_s;
        QTest::newRow("port twice") << QStringList { u"serve"_s, u"--port"_s, u"1"_s, u"--port"_s, u"2"_s } << u"--port is given twice"_s;
        QTest::newRow("port without a value") << QStringList { u"serve"_s, u"--port="_s } << u"--port needs a value"_s;
        QTest::newRow("a name to listen on") << QStringList { u"serve"_s, u"--listen"_s, u"example.com"_s } << u"--listen must be an IP address"_s;
        QTest::newRow("certificate alone") << QStringList { u"serve"_s, u"--certificate"_s, u"c"_s }
                                           << u"--certificate and --private-key belong together"_s;
        QTest::newRow("word after serve") << QStringList { u"serve"_s, u"now"_s } << u"serve takes no \"now\""_s;
        QTest::newRow("task alone") << QStringList { u"task"_s } << u"task must be followed by start or done"_s;
        QTest::newRow("title in pieces") << QStringList { u"task"_s, u"start"_s, u"a"_s, u"b"_s }
                                         << u"task start takes one title; put it in quotation marks"_s;
        QTest::newRow("empty title") << QStringList { u"task"_s, u"start"_s, u"  "_s } << u"The title is empty"_s;
        QTest::newRow("done with a title") << QStringList { u"task"_s, u"done"_s, u"report"_s } << u"task done takes one task's number, or nothing"_s;
        QTest::newRow("word after key") << QStringList { u"key"_s, u"x"_s } << u"key takes no \"x\""_s;
    }

    void refusesAndSaysWhy()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        const auto invocation = parseCommandLine(arguments);
        QVERIFY(!invocation.has_value());
        QCOMPARE(invocation.error(), reason);
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_command_line.moc"
