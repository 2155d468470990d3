#pragma once

#include "platform/callback.h"

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace orvanta {

/// Follows whether anybody owns a name on the session bus; starts nobody. Main thread only.
class SessionBusName : public QObject {
    Q_OBJECT

public:
    /// `changed` is called from the event loop when the name has got an owner, has got another one, or has lost it; for
    /// an owner that was there before, too.
    SessionBusName(const QString& name, Callback<> changed);

    [[nodiscard]] bool hasOwner() const { return m_hasOwner; }

private:
    void setOwner(bool hasOwner);

    QDBusServiceWatcher m_watcher;
    Callback<> m_changed;
    bool m_hasOwner = false;
    bool m_isKnown = false; ///< a change was told of before the first question was answered
};

} // namespace orvanta
