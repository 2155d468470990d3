#pragma once

#include "http_client.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>

/// The program under test, as its users start it.
class ServiceProgram {
public:
    struct Result {
        int status = -1;
        QByteArray output;
        QByteArray errors;
    };

    static QString path() { return qEnvironmentVariable("ORVANTA_SERVICE_PROGRAM"); }

    /// Runs a command to its end.
    static Result run(const QStringList& arguments)
    {
        QProcess process;
        process.start(path(), arguments);
        Result result;
        if (process.waitForFinished(30'000) && process.exitStatus() == QProcess::NormalExit)
            result.status = process.exitCode();
        result.output = process.readAllStandardOutput();
        result.errors = process.readAllStandardError();
        return result;
    }

    /// Starts to serve `folder` and waits until it says that it listens.
    explicit ServiceProgram(const QString& folder, const QStringList& options = {})
    {
        m_process.start(path(),
            QStringList { QStringLiteral("serve"), QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--data"), folder } + options);
        HttpClient::waitUntil(
            [this] { return m_process.canReadLine() || (m_process.state() == QProcess::NotRunning && m_process.error() != QProcess::UnknownError); });
        const QByteArray line = m_process.readLine().trimmed();
        if (line.startsWith("Listening on "))
            m_origin = line.sliced(QByteArrayView("Listening on ").size());
    }

    ServiceProgram(const ServiceProgram&) = delete;
    ServiceProgram& operator=(const ServiceProgram&) = delete;
    ~ServiceProgram()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    [[nodiscard]] bool isListening() const { return !m_origin.isEmpty(); }
    [[nodiscard]] QByteArray origin() const { return m_origin; }
    [[nodiscard]] quint16 port() const { return static_cast<quint16>(QUrl(QString::fromLatin1(m_origin)).port()); }
    QProcess& process() { return m_process; }

    /// Sends a signal and waits for the end.
    Result end(int signal)
    {
        ::kill(static_cast<pid_t>(m_process.processId()), signal);
        Result result;
        if (m_process.waitForFinished(30'000) && m_process.exitStatus() == QProcess::NormalExit)
            result.status = m_process.exitCode();
        result.output = m_process.readAllStandardOutput();
        result.errors = m_process.readAllStandardError();
        return result;
    }

    static QByteArray bearer(const QString& folder)
    {
        return "Authorization: Bearer " + run({ QStringLiteral("key"), QStringLiteral("--data"), folder }).output.trimmed();
    }

private:
    QProcess m_process;
    QByteArray m_origin;
};
