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

Subscription FilterdNotifications::observe(const QString& name, Callback<> delivered)
{
    auto& notification = m_notifications[name];
    if (!notification)
        notification = std::make_unique<FilterdNotification>(name);
    return notification->observers.add(std::move(delivered));
}

} // namespace orvanta
