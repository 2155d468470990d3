#include "platform/linux/session_bus_name.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace orvanta {

using namespace Qt::StringLiterals;

SessionBusName::SessionBusName(const QString& name, Callback<> changed)
    : m_watcher(name, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange)
    , m_changed(std::move(changed))
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this](const QString&, const QString&, const QString& owner) {
        m_isKnown = true;
        setOwner(!owner.isEmpty());
    });
    if (!m_watcher.connection().isConnected())
        return;
    QDBusMessage question
        = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    question << name;
    auto* answer = new QDBusPendingCallWatcher(m_watcher.connection().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<bool> reply = *finished;
        if (!m_isKnown && reply.isValid() && reply.value())
            setOwner(true);
    });
}

void SessionBusName::setOwner(bool hasOwner)
{
    m_hasOwner = hasOwner;
    m_changed();
}

} // namespace orvanta
