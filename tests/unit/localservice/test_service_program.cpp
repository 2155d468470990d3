#include "service_program.h"

#include <QDir>
#include <QSslCertificate>
#include <QSslSocket>
#include <QTcpServer>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

unsigned modeOf(const QString& path)
{
    struct stat information {};
    return ::stat(QFile::encodeName(path).constData(), &information) == 0 ? information.st_mode & 07777 : 0;
}

bool write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A certificate for "localhost" of its own signing, made now so that it never expires in the source.
bool makeIdentity(const QString& folder, const QString& name)
{
    QProcess openssl;
    openssl.start(u"openssl"_s,
        { u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s, u"ec_paramgen_curve:P-256"_s, u"-nodes"_s, u"-days"_s, u"2"_s, u"-subj"_s,
            u"/CN=localhost"_s, u"-addext"_s, u"subjectAltName=DNS:localhost,DNS:orvanta.home"_s, u"-keyout"_s, folder + u'/' + name + u".key"_s,
            u"-out"_s, folder + u'/' + name + u".pem"_s });
    return openssl.waitForFinished(30000) && openssl.exitCode() == 0;
}

} // namespace

class TestServiceProgram : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_parent;
    QString m_folder;

    [[nodiscard]] ServiceProgram::Result run(const QStringList& arguments) const
    {
        return ServiceProgram::run(arguments + QStringList { u"--data"_s, m_folder });
    }

private Q_SLOTS:
    void init()
    {
        m_parent = std::make_unique<QTemporaryDir>();
        m_folder = m_parent->filePath(u"data"_s);
    }

    void servesUntilItIsToldToEnd_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
    }

    void servesUntilItIsToldToEnd()
    {
        QFETCH(int, signal);
        const QString readyFile = m_parent->filePath(u"ready"_s);
        QVERIFY(write(readyFile, "stale"));
        ServiceProgram service(m_folder, { u"--ready-file"_s, readyFile });
        QVERIFY(service.isListening());
        QCOMPARE(service.origin(), "http://127.0.0.1:" + QByteArray::number(service.port()));
        QVERIFY(HttpClient::waitUntil([&] { return read(readyFile) == service.origin() + '\n'; }));
        QCOMPARE(exchange(service.port(), "GET", "/api/focus-state", { ServiceProgram::bearer(m_folder) })->status, 200);
        HttpClient idle(service.port()); // does not hold it up
        const auto result = service.end(signal);
        QCOMPARE(result.status, 0);
        QCOMPARE(result.errors, ""_ba);
        QVERIFY(!QFile::exists(readyFile));
    }

    void filesAreForTheirOwnerAlone()
    {
        ServiceProgram service(m_folder);
        QVERIFY(service.isListening());
        QCOMPARE(modeOf(m_folder), 0700U);
        const QStringList files = QDir(m_folder).entryList(QDir::Files);
        QVERIFY(files.contains(u"api-key"_s));
        for (const QString& file : files)
            QCOMPARE(modeOf(m_folder + u'/' + file), 0600U);
    }

    void commandsAndServiceShareOneFolder()
    {
        ServiceProgram service(m_folder);
        QVERIFY(service.isListening());
        const QByteArray bearer = ServiceProgram::bearer(m_folder);
        const auto started = run({ u"task"_s, u"start"_s, u"Write the report"_s });
        QCOMPARE(started.status, 0);
        QCOMPARE(started.output, "Started task 1: Write the report\n"_ba);
        QCOMPARE(exchange(service.port(), "GET", "/api/focus-state", { bearer })->body,
            "{\"active\":true,\"inProgressTaskCount\":1,\"policyRevision\":1}"_ba);
        QCOMPARE(run({ u"task"_s, u"done"_s }).output, "Done with task 1: Write the report\n"_ba);
        QCOMPARE(exchange(service.port(), "GET", "/api/focus-state", { bearer })->body,
            "{\"active\":false,\"inProgressTaskCount\":0,\"policyRevision\":1}"_ba);
    }

    void commandsWorkWithoutAService()
    {
        QCOMPARE(run({ u"status"_s }).output, "Focus is off\n"_ba);
        QCOMPARE(
            run({ u"status"_s, u"--json"_s }).output, "{\"active\":false,\"inProgressTaskCount\":0,\"policyRevision\":1,\"tasks\":[]}"_ba + '\n');
        QCOMPARE(run({ u"task"_s, u"start"_s, u"One"_s }).status, 0);
        QCOMPARE(run({ u"task"_s, u"start"_s, u"Two"_s }).status, 0);
        const auto status = run({ u"status"_s });
        QVERIFY(status.output.startsWith("Focus is on\n  2  Two  (since "));
        QVERIFY(status.output.contains("\n  1  One  (since "));
        QVERIFY(run({ u"status"_s, u"--json"_s })
                .output.startsWith(
                    "{\"active\":true,\"inProgressTaskCount\":2,\"policyRevision\":1,\"tasks\":[{\"id\":2,\"title\":\"Two\",\"startedAt\":"));
        QCOMPARE(run({ u"task"_s, u"done"_s, u"1"_s }).output, "Done with task 1: One\n"_ba);
    }

    void failuresEndWithOneAndALine()
    {
        const auto nothing = run({ u"task"_s, u"done"_s });
        QCOMPARE(nothing.status, 1);
        QCOMPARE(nothing.output, ""_ba);
        QCOMPARE(nothing.errors, "orvanta-service: No task is in progress\n"_ba);
        const auto unknown = run({ u"task"_s, u"done"_s, u"9"_s });
        QCOMPARE(unknown.status, 1);
        QCOMPARE(unknown.errors, "orvanta-service: No task in progress has the number 9\n"_ba);
    }

    void wrongArgumentsEndWithTwoAndALine()
    {
        const auto wrong = ServiceProgram::run({ u"dance"_s });
        QCOMPARE(wrong.status, 2);
        QCOMPARE(wrong.output, ""_ba);
        QCOMPARE(wrong.errors, "orvanta-service: There is no command \"dance\"\nTry: orvanta-service --help\n"_ba);
        QCOMPARE(ServiceProgram::run({}).status, 2);
    }

    void helpAndVersionEndWithZero()
    {
        const auto help = ServiceProgram::run({ u"--help"_s });
        QCOMPARE(help.status, 0);
        QVERIFY(help.output.contains("Exit status:"));
        QCOMPARE(help.errors, ""_ba);
        QVERIFY(ServiceProgram::run({ u"--version"_s }).output.startsWith("orvanta-service "));
    }

    void theKeyIsTheOneThatTheServiceWants()
    {
        const auto first = run({ u"key"_s });
        QCOMPARE(first.status, 0);
        QCOMPARE(first.output.trimmed().size(), 43);
        ServiceProgram service(m_folder);
        QVERIFY(service.isListening());
        QCOMPARE(run({ u"key"_s }).output, first.output);
        QCOMPARE(exchange(service.port(), "GET", "/api/focus-state", { "Authorization: Bearer " + first.output.trimmed() })->status, 200);
        QCOMPARE(exchange(service.port(), "GET", "/api/focus-state")->status, 401);
    }

    void aKeyThatOthersCouldReadIsReported()
    {
        QCOMPARE(run({ u"key"_s }).status, 0);
        QCOMPARE(::chmod(QFile::encodeName(m_folder + u"/api-key"_s).constData(), 0644), 0);
        const auto key = run({ u"key"_s });
        QCOMPARE(key.status, 0);
        QVERIFY(key.errors.contains("could be read by others: its mode is now 0600"));
        QCOMPARE(modeOf(m_folder + u"/api-key"_s), 0600U);
    }

    void aBusyPortIsAClearFailure()
    {
        QTcpServer occupier;
        QVERIFY(occupier.listen(QHostAddress::LocalHost, 0));
        const auto result = run({ u"serve"_s, u"--port"_s, QString::number(occupier.serverPort()) });
        QCOMPARE(result.status, 1);
        QCOMPARE(result.output, ""_ba);
        QVERIFY2(result.errors.startsWith("orvanta-service: Cannot listen on 127.0.0.1, port " + QByteArray::number(occupier.serverPort())),
            result.errors.constData());
    }

    void twoServicesDoNotServeOneFolder()
    {
        ServiceProgram service(m_folder);
        QVERIFY(service.isListening());
        const auto second = run({ u"serve"_s, u"--port"_s, u"0"_s });
        QCOMPARE(second.status, 1);
        QCOMPARE(second.errors, "orvanta-service: Another service is serving the data folder " + m_folder.toUtf8() + "\n");
    }

    void aDamagedDatabaseIsMovedAsideAndReported()
    {
        QCOMPARE(run({ u"task"_s, u"start"_s, u"x"_s }).status, 0);
        const QByteArray damaged(20000, 'x');
        QVERIFY(write(m_folder + u"/orvanta-service.sqlite"_s, damaged));
        const auto refused = run({ u"status"_s });
        QCOMPARE(refused.status, 1);
        QVERIFY(refused.errors.contains("The database is damaged; \"serve\" moves it aside"));

        ServiceProgram service(m_folder);
        QVERIFY(service.isListening());
        const QStringList kept = QDir(m_folder).entryList({ u"orvanta-service.sqlite.damaged-*Z"_s }, QDir::Files);
        QCOMPARE(kept.size(), 1);
        QCOMPARE(read(m_folder + u'/' + kept.first()), damaged);
        QCOMPARE(run({ u"status"_s }).output, "Focus is off\n"_ba);
        QVERIFY(service.end(SIGTERM).errors.contains("The database was damaged. It is kept as "));
    }

    void aDatabaseThatCannotBeOpenedIsAClearFailure()
    {
        QVERIFY(QDir().mkpath(m_folder + u"/orvanta-service.sqlite"_s));
        QCOMPARE(::chmod(QFile::encodeName(m_folder).constData(), 0700), 0);
        for (const QStringList& arguments : { QStringList { u"serve"_s, u"--port"_s, u"0"_s }, QStringList { u"status"_s } }) {
            const auto result = run(arguments);
            QCOMPARE(result.status, 1);
            QVERIFY(result.errors.contains("orvanta-service.sqlite cannot be opened"));
            QCOMPARE(result.errors.count('\n'), 1);
        }
    }

    void aDataFolderThatCannotBeMadeIsAClearFailure()
    {
        QVERIFY(write(m_parent->filePath(u"file"_s), "x"));
        m_folder = m_parent->filePath(u"file/data"_s);
        const auto result = run({ u"status"_s });
        QCOMPARE(result.status, 1);
        QVERIFY(result.errors.startsWith("orvanta-service: The data folder "));
    }

    void theDiskCanFillUpAndThePersonIsTold()
    {
        // A limit on the size of files stands for the disk: the system refuses to write beyond it.
        QProcess process;
        process.setChildProcessModifier([] {
            const rlimit limit { 600000, 600000 };
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::signal(SIGXFSZ, SIG_IGN);
        });
        process.start(ServiceProgram::path(), { u"serve"_s, u"--port"_s, u"0"_s, u"--data"_s, m_folder });
        QVERIFY(HttpClient::waitUntil([&] { return process.canReadLine(); }));
        const auto port
            = static_cast<quint16>(QUrl(QString::fromLatin1(process.readLine().trimmed().sliced(QByteArrayView("Listening on ").size()))).port());
        const QByteArray bearer = ServiceProgram::bearer(m_folder);
        HttpClient::Answer reply;
        int stored = 0;
        for (; stored < 200; ++stored) {
            const QByteArray event = "{\"eventId\":\"" + QByteArray::number(stored)
                + "\",\"eventType\":\"Stop\",\"sessionId\":\"s\",\"occurredAt\":\"2026-01-31T08:05:09Z\"," + "\"prompt\":\"" + QByteArray(20000, 'x')
                + "\"}";
            reply = exchange(port, "POST", "/api/codex/sessions/events", { bearer }, event);
            if (!reply || reply->status != 201)
                break;
        }
        QVERIFY(reply.has_value());
        QCOMPARE(reply->status, 500);
        QVERIFY(reply->body.startsWith("{\"error\":\"The database cannot be read or written"));
        QVERIFY(stored > 0);
        QCOMPARE(exchange(port, "GET", "/api/focus-state", { bearer })->status, 200);
        process.terminate();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.readAllStandardError().contains("The database cannot be read or written"));
    }

    void speaksHttpsWithACertificate()
    {
        const QString folder = m_parent->path();
        QVERIFY(makeIdentity(folder, u"own"_s));
        ServiceProgram service(m_folder, { u"--certificate"_s, folder + u"/own.pem"_s, u"--private-key"_s, folder + u"/own.key"_s });
        QVERIFY(service.isListening());
        QCOMPARE(service.origin(), "https://127.0.0.1:" + QByteArray::number(service.port()));

        auto socket = std::make_unique<QSslSocket>();
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(QSslCertificate::fromPath(folder + u"/own.pem"_s));
        socket->setSslConfiguration(configuration);
        socket->setPeerVerifyName(u"localhost"_s);
        QSslSocket& encrypted = *socket;
        HttpClient client(std::move(socket), service.port());
        encrypted.startClientEncryption();
        QVERIFY(HttpClient::waitUntil([&] { return encrypted.isEncrypted(); }));
        for (int index = 0; index < 3; ++index) { // one handshake serves many requests
            client.send(requestBytes("GET", "/api/focus-state", { ServiceProgram::bearer(m_folder) }));
            QCOMPARE(client.receive()->status, 200);
        }
        client.send(requestBytes("POST", "/api/activity", { ServiceProgram::bearer(m_folder) }, QByteArray(3000'000, ' ')));
        QCOMPARE(client.receive()->status, 400);
        client.send(requestBytes("GET", "/", { "Host: orvanta.home" }));
        QCOMPARE(client.receive()->status, 200);
        client.send(requestBytes("GET", "/", { "Host: evil.example" }));
        QCOMPARE(client.receive()->status, 403);

        HttpClient plain(service.port());
        plain.send(requestBytes("GET", "/"));
        QVERIFY(plain.isClosedByPeer());
        QCOMPARE(service.end(SIGTERM).status, 0);
    }

    void outdatedVersionsOfTlsAreRefused()
    {
        const QString folder = m_parent->path();
        QVERIFY(makeIdentity(folder, u"own"_s));
        ServiceProgram service(m_folder, { u"--certificate"_s, folder + u"/own.pem"_s, u"--private-key"_s, folder + u"/own.key"_s });
        QVERIFY(service.isListening());
        const auto connects = [&](const QString& version) {
            QProcess openssl;
            // The level 0 lets the client offer what it would otherwise not even try.
            openssl.start(u"openssl"_s,
                { u"s_client"_s, u"-connect"_s, u"127.0.0.1:%1"_s.arg(service.port()), version, u"-cipher"_s, u"DEFAULT:@SECLEVEL=0"_s });
            openssl.closeWriteChannel();
            return openssl.waitForFinished(30000) && openssl.exitCode() == 0;
        };
        QVERIFY(connects(u"-tls1_3"_s));
        QVERIFY(connects(u"-tls1_2"_s));
        QVERIFY(!connects(u"-tls1_1"_s));
        QVERIFY(!connects(u"-tls1"_s));
    }

    void badCertificatesAreClearFailures()
    {
        const QString folder = m_parent->path();
        QVERIFY(makeIdentity(folder, u"own"_s));
        QVERIFY(write(folder + u"/empty"_s, ""));
        const auto serve = [&](const QString& certificate, const QString& key) {
            return run({ u"serve"_s, u"--port"_s, u"0"_s, u"--certificate"_s, folder + certificate, u"--private-key"_s, folder + key });
        };
        const auto missing = serve(u"/absent"_s, u"/own.key"_s);
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.errors.contains("/absent cannot be read"));
        const auto noCertificate = serve(u"/empty"_s, u"/own.key"_s);
        QCOMPARE(noCertificate.status, 1);
        QVERIFY(noCertificate.errors.contains("/empty holds no certificate"));
        QVERIFY(makeIdentity(folder, u"other"_s));
        const auto mismatch = serve(u"/own.pem"_s, u"/other.key"_s);
        QCOMPARE(mismatch.status, 1);
        QCOMPARE(mismatch.errors, "orvanta-service: The certificate and the private key cannot be used together\n"_ba);
        const auto noKey = serve(u"/own.pem"_s, u"/empty"_s);
        QCOMPARE(noKey.status, 1);
        QVERIFY(noKey.errors.contains("/empty holds no unencrypted RSA or EC private key"));
    }
};

QTEST_GUILESS_MAIN(TestServiceProgram)
#include "test_service_program.moc"
