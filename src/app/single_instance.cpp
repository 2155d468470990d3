#include "app/single_instance.h"

#include <QDebug>
#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr int knockTimeout = 2000; // milliseconds; the other copy answers from its event loop

QString inRuntimeFolder(const QString& name)
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)).filePath(name);
}

void knock(const QString& socketPath)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(knockTimeout))
        qWarning("Another copy of Orvanta Focus runs, but it does not answer");
}

} // namespace

SingleInstance::SingleInstance() : m_lock(inRuntimeFolder(u"orvanta-focus.lock"_s))
{
    m_lock.setStaleLockTime(0); // only the death of its process frees the lock, never its age
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Claim SingleInstance::claim()
{
    const QString socketPath = inRuntimeFolder(u"orvanta-focus.sock"_s);
    if (!m_lock.tryLock()) {
        if (m_lock.error() == QLockFile::LockFailedError) {
            knock(socketPath);
            return Claim::anotherOneRuns;
        }
        qWarning("Cannot tell whether another copy of Orvanta Focus runs: the runtime folder cannot be written");
        return Claim::weAreTheFirst;
    }
    QLocalServer::removeServer(socketPath); // what a killed copy left behind
    if (!m_server.listen(socketPath))
        qWarning("A second start of Orvanta Focus will not find this one: %s", qUtf8Printable(m_server.errorString()));
    return Claim::weAreTheFirst;
}

void SingleInstance::onSecondStart(Callback<> started)
{
    m_started = std::move(started);
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] {
        while (QLocalSocket* visitor = m_server.nextPendingConnection()) {
            visitor->deleteLater();
            m_started();
        }
    });
}

} // namespace orvanta
