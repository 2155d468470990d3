#pragma once

#include <QProcess>
#include <QString>

#include <signal.h>

namespace orvanta::testing {

/// A notification service on the test's own bus.
class DoNotDisturb {
public:
    explicit DoNotDisturb(const QString& kind)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral("/usr/bin/python3"), { QStringLiteral(DO_NOT_DISTURB), kind });
        m_isReady = saysNext("ready");
    }
    DoNotDisturb(const DoNotDisturb&) = delete;
    DoNotDisturb& operator=(const DoNotDisturb&) = delete;
    ~DoNotDisturb()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished(patience);
    }

    [[nodiscard]] bool isReady() const { return m_isReady; }
    [[nodiscard]] bool obeys(const QByteArray& word)
    {
        m_process.write(word + '\n');
        return saysNext("done");
    }
    void pause() { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    void resume() { ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT); }

private:
    static constexpr int patience = 15'000;

    [[nodiscard]] bool saysNext(const QByteArray& word)
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(patience))
                return false;
        }
        return m_process.readLine().trimmed() == word;
    }

    QProcess m_process;
    bool m_isReady = false;
};

/// GNOME's setting, as its own program sets it.
[[nodiscard]] inline bool setShowBanners(bool areShown)
{
    constexpr int patience = 15'000;
    QProcess gsettings;
    gsettings.start(QStringLiteral("gsettings"),
        { QStringLiteral("set"), QStringLiteral("org.gnome.desktop.notifications"), QStringLiteral("show-banners"),
            areShown ? QStringLiteral("true") : QStringLiteral("false") });
    return gsettings.waitForFinished(patience) && gsettings.exitCode() == 0;
}

} // namespace orvanta::testing
