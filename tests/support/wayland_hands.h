#pragma once

#include <QProcess>
#include <QString>

namespace orvanta::testing {

/// What a user does on this desktop, through the program that plays one.
class Hands {
public:
    Hands()
    {
        m_program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_program.start(QStringLiteral("/usr/bin/python3"), { QStringLiteral(WAYLAND_HANDS) });
    }
    ~Hands()
    {
        m_program.closeWriteChannel();
        m_program.waitForFinished();
    }
    Hands(const Hands&) = delete;
    Hands& operator=(const Hands&) = delete;

    QByteArray tell(const QString& order)
    {
        m_program.write(order.toUtf8() + '\n');
        while (!m_program.canReadLine() && m_program.waitForReadyRead(patience))
            continue;
        return m_program.readLine().trimmed();
    }

private:
    static constexpr int patience = 60'000;

    QProcess m_program;
};

/// A real application, from its start to the end of this.
class Client {
public:
    Client(Hands& hands, const QString& program, const QStringList& arguments, int windows) : m_hands(hands)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("GDK_BACKEND"), QStringLiteral("wayland"));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
        environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(program, arguments);
        m_process.waitForStarted();
        m_isShown = m_hands.tell(QStringLiteral("shown %1 %2").arg(windows).arg(m_process.processId())) == "done";
    }
    ~Client()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    [[nodiscard]] bool isShown() const { return m_isShown; }
    [[nodiscard]] qint64 process() const { return m_process.processId(); }
    [[nodiscard]] bool bringToFront() { return m_hands.tell(QStringLiteral("front %1").arg(m_process.processId())) == "done"; }
    [[nodiscard]] bool isHidden() { return m_hands.tell(QStringLiteral("hidden %1").arg(m_process.processId())) == "yes"; }

private:
    Hands& m_hands;
    QProcess m_process;
    bool m_isShown = false;
};

} // namespace orvanta::testing
