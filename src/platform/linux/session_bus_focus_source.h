#pragma once

#include "platform/linux/desktop_focus_sources.h"
#include "platform/linux/session_bus_name.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>

#include <vector>

namespace orvanta {

/// Signals after which it is worth asking again. What is empty matches everything.
struct FocusAnnouncement {
    QString path = {};
    QString interface = {};
    QString member = {};
    QString firstArgument = {};
};

/// How a service on the session bus is asked for its Do Not Disturb.
struct FocusQuestion {
    QString service = {};
    QString alsoNeeded = {};          ///< a second name that has to have an owner; empty: none
    QDBusMessage ask = {};            ///< answered by a truth value, as it stands or in a variant; any other answer means: no such service
    QString refusalThatMeansOff = {}; ///< errors whose names begin so mean that it is off; empty: none
    std::vector<FocusAnnouncement> announcements = {};
};

[[nodiscard]] QDBusMessage methodQuestion(
    const QString& service, const QString& path, const QString& interface, const QString& method, const QVariantList& arguments);
[[nodiscard]] QDBusMessage propertyQuestion(const QString& service, const QString& path, const QString& interface, const QString& property);
[[nodiscard]] FocusAnnouncement propertyAnnouncement(const QString& path, const QString& interface);

/// The Do Not Disturb of a service on the session bus: asked for when the service appears, and again whenever it
/// announces something. Never waits, and never starts a service.
class SessionBusFocusSource : public QObject, public FocusSource {
    Q_OBJECT

public:
    explicit SessionBusFocusSource(FocusQuestion question);

    [[nodiscard]] std::optional<bool> isFocused() const override { return m_isFocused; }

private Q_SLOTS:
    void ask();

private:
    [[nodiscard]] bool isThere() const;
    void take(const QDBusMessage& reply);

    FocusQuestion m_question;
    SessionBusName m_service;
    std::unique_ptr<SessionBusName> m_alsoNeeded;
    std::unique_ptr<QDBusPendingCallWatcher> m_answer; ///< the latest question's; those before it no longer count
    std::optional<bool> m_isFocused;
};

} // namespace orvanta
