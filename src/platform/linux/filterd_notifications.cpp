#include "platform/linux/filterd_notifications.h"

#include "platform/linux/filterd_connection.h"

#include <QDBusConnection>

namespace orvanta {

using namespace Qt::StringLiterals;

FilterdNotification::FilterdNotification(QString name) : m_name(std::move(name))
{
    QDBusConnection::systemBus().connect(
        Filterd::service, Filterd::path, Filterd::interface, Filterd::notification, { m_name }, u"s"_s, this, SLOT(take(QString)));
}

FilterdNotification::~FilterdNotification()
{
    QDBusConnection::systemBus().disconnect(
        Filterd::service, Filterd::path, Filterd::interface, Filterd::notification, { m_name }, u"s"_s, this, SLOT(take(QString)));
}

void FilterdNotification::take(const QString& name)
{
    // The bus has matched the name already, unless it is an empty one, which matches everything there.
    if (name == m_name)
        observers.notify();
}

FilterdNotifications::FilterdNotifications() : m_daemon(Filterd::service, QDBusConnection::systemBus(), QDBusServiceWatcher::WatchForOwnerChange)
{
    QObject::connect(&m_daemon, &QDBusServiceWatcher::serviceOwnerChanged, &m_daemon, [this] { named(extensionChanged).observers.notify(); });
}

Subscription FilterdNotifications::observe(const QString& name, Callback<> delivered)
{
    return named(name).observers.add(std::move(delivered));
}

FilterdNotification& FilterdNotifications::named(const QString& name)
{
    auto& notification = m_notifications[name];
    if (!notification)
        notification = std::make_unique<FilterdNotification>(name);
    return *notification;
}

} // namespace orvanta
