#pragma once

#include "localservice/event_store.h"
#include "localservice/http_exchange.h"
#include "localservice/task_store.h"

namespace orvanta::localservice {

/// What the page at "/" shows.
struct HomePage {
    std::vector<Task> inProgress;
    std::vector<Task> latestDone;
    qint64 agentEventsOfLastDay = 0;
    std::vector<AgentSession> agentSessions;
    QByteArray formToken; ///< goes into each form
    UtcTime now;
};

// Every page is complete in itself: its style is within it, it loads nothing, and runs no script.

[[nodiscard]] Response homePage(const HomePage& content);

/// What the browser shows in place of a blocked web site.
[[nodiscard]] Response blockedPage();

/// A refusal or a failure, with a link back to "/".
[[nodiscard]] Response problemPage(int status, const QString& heading, const QString& explanation);

} // namespace orvanta::localservice
