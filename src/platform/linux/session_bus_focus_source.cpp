#include "platform/linux/session_bus_focus_source.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusVariant>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

const auto propertiesInterface = u"org.freedesktop.DBus.Properties"_s;

/// A service that hangs has not changed its mind.
bool isSilence(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return false;
    const auto error = QDBusError(reply).type();
    return error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
}

} // namespace

QDBusMessage methodQuestion(
    const QString& service, const QString& path, const QString& interface, const QString& method, const QVariantList& arguments)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setArguments(arguments);
    question.setAutoStartService(false);
    return question;
}

QDBusMessage propertyQuestion(const QString& service, const QString& path, const QString& interface, const QString& property)
{
    return methodQuestion(service, path, propertiesInterface, u"Get"_s, { interface, property });
}

FocusAnnouncement propertyAnnouncement(const QString& path, const QString& interface)
{
    return { .path = path, .interface = propertiesInterface, .member = u"PropertiesChanged"_s, .firstArgument = interface };
}

SessionBusFocusSource::SessionBusFocusSource(FocusQuestion question)
    : m_question(std::move(question))
    , m_service(m_question.service, [this] { ask(); })
{
    if (!m_question.alsoNeeded.isEmpty())
        m_alsoNeeded = std::make_unique<SessionBusName>(m_question.alsoNeeded, [this] { ask(); });
    QDBusConnection bus = QDBusConnection::sessionBus();
    for (const FocusAnnouncement& announcement : m_question.announcements) {
        const QStringList arguments = announcement.firstArgument.isEmpty() ? QStringList() : QStringList(announcement.firstArgument);
        // From whomever it comes: it is only a reason to ask the service itself.
        bus.connect(QString(), announcement.path, announcement.interface, announcement.member, arguments, QString(), this, SLOT(ask()));
    }
}

bool SessionBusFocusSource::isThere() const
{
    return m_service.hasOwner() && (!m_alsoNeeded || m_alsoNeeded->hasOwner());
}

void SessionBusFocusSource::ask()
{
    if (!isThere()) {
        m_answer.reset();
        m_isFocused.reset();
        return;
    }
    m_answer = std::make_unique<QDBusPendingCallWatcher>(QDBusConnection::sessionBus().asyncCall(m_question.ask));
    connect(m_answer.get(), &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) { take(finished->reply()); });
}

void SessionBusFocusSource::take(const QDBusMessage& reply)
{
    const QString refusal = m_question.refusalThatMeansOff;
    if (reply.type() == QDBusMessage::ErrorMessage && !refusal.isEmpty() && reply.errorName().startsWith(refusal)) {
        m_isFocused = false;
        return;
    }
    if (isSilence(reply))
        return;
    m_isFocused.reset();
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return;
    QVariant value = reply.arguments().constFirst();
    if (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.metaType() == QMetaType::fromType<bool>())
        m_isFocused = value.toBool();
}

} // namespace orvanta
