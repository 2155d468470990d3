#include "platform/linux/filterd_connection.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>

#include <limits>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr int untilItIsAnswered = std::numeric_limits<int>::max(); // a user takes the time that a user takes
constexpr int patience = 30'000;

} // namespace

void Filterd::call(QObject& context, QLatin1StringView method, const QVariantList& arguments, Start start, Interaction interaction,
    Callback<const QDBusMessage&> answered)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(start == Start::ifNeeded);
    message.setInteractiveAuthorizationAllowed(interaction == Interaction::allowed);
    const auto pending = QDBusConnection::systemBus().asyncCall(message, interaction == Interaction::allowed ? untilItIsAnswered : patience);
    auto* watcher = new QDBusPendingCallWatcher(pending, &context);
    const auto finish = [watcher, answered = std::make_shared<Callback<const QDBusMessage&>>(std::move(answered))] {
        watcher->deleteLater();
        (*answered)(watcher->reply());
    };
    // A call that could not even be sent is finished before anybody can listen.
    if (watcher->isFinished())
        QMetaObject::invokeMethod(watcher, finish, Qt::QueuedConnection);
    else
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, finish);
}

bool Filterd::isAbsent(const QDBusMessage& answer)
{
    switch (QDBusError(answer).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::NoServer:
    case QDBusError::Disconnected:
        return true;
    default:
        return answer.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1
            || answer.errorName() == "org.freedesktop.DBus.Error.FileNotFound"_L1;
    }
}

PlatformError Filterd::errorOf(const QDBusMessage& answer)
{
    if (isAbsent(answer))
        return { QObject::tr("The website filter is not installed on this computer") };
    if (answer.type() != QDBusMessage::ErrorMessage)
        return { QObject::tr("The website filter gave an answer that cannot be read") };
    return { answer.errorMessage() };
}

} // namespace orvanta
