#pragma once

#include "platform/portable/observers.h"
#include "platform/system_notifications.h"

#include <QDBusServiceWatcher>
#include <QObject>

#include <map>
#include <memory>

namespace orvanta {

/// One notification of the system bus: a signal of orvanta-filterd whose only argument is the notification's name, since
/// the names of signals may not hold a hyphen. The bus matches the argument and the sender.
class FilterdNotification : public QObject {
    Q_OBJECT

public:
    explicit FilterdNotification(QString name);
    ~FilterdNotification() override;

    Observers<> observers;

private Q_SLOTS:
    void take(const QString& name);

private:
    QString m_name;
};

/// The notifications that orvanta-filterd posts. That it has come or gone it cannot post itself: the bus says so.
class FilterdNotifications : public SystemNotifications {
public:
    FilterdNotifications();

    [[nodiscard]] Subscription observe(const QString& name, Callback<> delivered) override;

private:
    FilterdNotification& named(const QString& name);

    QDBusServiceWatcher m_daemon;
    std::map<QString, std::unique_ptr<FilterdNotification>> m_notifications;
};

} // namespace orvanta
