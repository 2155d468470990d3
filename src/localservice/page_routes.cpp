#include "localservice/page_routes.h"

#include "localservice/activity_export.h"
#include "localservice/activity_page.h"
#include "localservice/browser_guard.h"
#include "localservice/event_store.h"
#include "localservice/key_file.h"
#include "localservice/pages.h"
#include "localservice/task_store.h"

#include <QRandomGenerator>

#include <array>
#include <iostream>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

constexpr int doneTasksShown = 10;
constexpr int agentSessionsShown = 10;
constexpr int eventsShownOfEach = 10;

UtcTime now()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

QByteArray newFormToken()
{
    std::array<quint32, 8> random {};
    QRandomGenerator::system()->fillRange(random.data(), static_cast<qsizetype>(random.size()));
    return QByteArray(reinterpret_cast<const char*>(random.data()), sizeof(random))
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

Response failurePage(const StoreError& error)
{
    std::cerr << "orvanta-service: " << error.description.toStdString() << '\n';
    return problemPage(500, u"That did not work"_s, error.description);
}

Response backHome()
{
    return { 303, {}, {}, { { "Location", "/" } } };
}

Response home(Database& database, const QByteArray& token)
{
    const UtcTime moment = now();
    auto inProgress = TaskStore(database).inProgress();
    if (!inProgress)
        return failurePage(inProgress.error());
    auto latestDone = TaskStore(database).latestDone(doneTasksShown);
    if (!latestDone)
        return failurePage(latestDone.error());
    const auto events = EventStore(database).countSince(moment - std::chrono::days { 1 });
    if (!events)
        return failurePage(events.error());
    auto sessions = EventStore(database).latestSessions(agentSessionsShown, eventsShownOfEach);
    if (!sessions)
        return failurePage(sessions.error());
    return homePage({ *std::move(inProgress), *std::move(latestDone), *events, *std::move(sessions), token, moment });
}

DayRange rangeOf(const RequestHead& head)
{
    return chosenRange(head.queryValue("from"), head.queryValue("to"), QDate::currentDate());
}

Response activity(Database& database, const RequestHead& head)
{
    const auto overview = activityOverview(database, rangeOf(head), now());
    return overview ? activityPage(*overview, QDate::currentDate()) : failurePage(overview.error());
}

/// A file of the chosen range.
Response activityFile(
    Database& database, const RequestHead& head, const QByteArray& contentType, const QByteArray& suffix, ActivityExport::Format format)
{
    const DayRange range = rangeOf(head);
    auto file = ActivityExport::open(database, range.span(), format);
    if (!file)
        return failurePage(file.error());
    const QByteArray name
        = "orvanta-activity-" + range.first.toString(Qt::ISODate).toLatin1() + "-to-" + range.last.toString(Qt::ISODate).toLatin1() + suffix;
    return { 200, contentType, {}, { { "Content-Disposition", "attachment; filename=\"" + name + '"' } }, *std::move(file) };
}

Response startTask(Database& database, const FormFields& fields)
{
    // One click starts a task, with nothing typed.
    const QString title = acceptedTaskTitle(fields.value("title")).value_or(u"Focus time"_s);
    const auto task = TaskStore(database).start(title, now());
    return task ? backHome() : failurePage(task.error());
}

Response finishTask(Database& database, const FormFields& fields)
{
    bool isNumber = false;
    const qint64 id = fields.value("id").toLongLong(&isNumber);
    if (!isNumber)
        return problemPage(400, u"Which task?"_s, u"The form did not say which task is done."_s);
    // A task that was ended elsewhere meanwhile is what the person wanted: the page shows it.
    const auto task = TaskStore(database).finish(id, now());
    return task ? backHome() : failurePage(task.error());
}

} // namespace

std::vector<Route> pageRoutes(Database& database, const QByteArray& key, const QStringList& names)
{
    const QByteArray token = newFormToken();

    const auto guard = [key, names](const RequestHead& head, const Endpoints& endpoints) -> std::optional<Response> {
        if (!isOwnHost(head.header("host").value_or(""), endpoints.local, names))
            return problemPage(403, u"Unknown address"_s, u"This page is shown only under the service's own address."_s);
        if (endpoints.peer.isLoopback() || hasBasicPassword(head.header("authorization").value_or(""), key))
            return std::nullopt;
        Response response = problemPage(401, u"Key needed"_s, u"From another machine this page needs the API key as the password."_s);
        response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"Orvanta\", charset=\"UTF-8\"");
        return response;
    };

    const auto actionGuard = [guard](const RequestHead& head, const Endpoints& endpoints) -> std::optional<Response> {
        if (auto refused = guard(head, endpoints))
            return refused;
        if (!isOwnOrigin(head.header("origin").value_or(""), head.header("host").value_or(""), endpoints.scheme))
            return problemPage(403, u"Not from here"_s, u"Tasks can be changed from the service's own page alone."_s);
        return std::nullopt;
    };

    const auto action = [&database, token](Response (*perform)(Database&, const FormFields&)) {
        return [&database, token, perform](const Request& request) {
            const FormFields fields(request.body);
            if (!isSameSecret(fields.value("token").toUtf8(), token))
                return problemPage(
                    403, u"This page is out of date"_s, u"The service was started anew since the page was loaded. Go back and try again."_s);
            return perform(database, fields);
        };
    };

    return {
        { "/", "GET", mebibyte, guard, [&database, token](const Request&) { return home(database, token); } },
        { "/activity", "GET", mebibyte, guard, [&database](const Request& request) { return activity(database, request.head); } },
        { "/activity.csv", "GET", mebibyte, guard,
            [&database](const Request& request) {
                return activityFile(database, request.head, "text/csv; charset=utf-8", ".csv", ActivityExport::Format::csv);
            } },
        { "/activity.json", "GET", mebibyte, guard,
            [&database](
                const Request& request) { return activityFile(database, request.head, "application/json", ".json", ActivityExport::Format::json); } },
        { "/tasks/start", "POST", mebibyte, actionGuard, action(&startTask) },
        { "/tasks/done", "POST", mebibyte, actionGuard, action(&finishTask) },
        { "/focus/blocked", "GET", mebibyte, {}, [](const Request&) { return blockedPage(); } },
    };
}

} // namespace orvanta::localservice
