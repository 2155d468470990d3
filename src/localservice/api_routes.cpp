#include "localservice/api_routes.h"

#include "localservice/activity_store.h"
#include "localservice/event_store.h"
#include "localservice/json_response.h"
#include "localservice/key_file.h"
#include "localservice/policy_store.h"
#include "localservice/task_store.h"

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

// Ten periods that had to wait, merged into one, with long lists of pages.
constexpr std::uint64_t longestActivity = 8 * mebibyte;

UtcTime now()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

bool bearsKey(const RequestHead& head, const QByteArray& key)
{
    constexpr QByteArrayView scheme = "Bearer ";
    const auto header = head.header("authorization");
    if (!header)
        return false;
    const QByteArray value = QByteArray::fromStdString(std::string(*header));
    return value.first(std::min(scheme.size(), value.size())).compare(scheme, Qt::CaseInsensitive) == 0
        && isSameSecret(value.sliced(scheme.size()), key);
}

Response focusState(Database& database)
{
    const auto count = TaskStore(database).inProgressCount();
    if (!count)
        return storeFailure(count.error());
    const auto revision = PolicyStore(database).revision();
    if (!revision)
        return storeFailure(revision.error());
    return jsonResponse(200, { { "active", *count > 0 }, { "inProgressTaskCount", *count }, { "policyRevision", *revision } });
}

Response policyResponse(const std::expected<Policy, StoreError>& policy)
{
    if (!policy)
        return storeFailure(policy.error());
    Json domains = Json::array();
    for (const QString& domain : policy->blockedDomains)
        domains.push_back(jsonText(domain));
    Json applications = Json::array();
    for (const BlockedApplication& application : policy->blockedApplications)
        applications.push_back(
            { { "bundleIdentifier", jsonText(application.bundleIdentifier) }, { "displayName", jsonText(application.displayName) } });
    return jsonResponse(200, { { "revision", policy->revision }, { "blockedDomains", domains }, { "blockedApplications", applications } });
}

Response changePolicy(Database& database, const QByteArray& body)
{
    const auto json = readJsonObject(body);
    if (!json)
        return errorResponse(400, json.error().description);
    std::optional<BadInput> problem;
    ObjectReader reader(*json, {}, problem);
    const QString actionName = reader.text("action");
    const QString value = reader.text("value");
    if (problem)
        return errorResponse(400, problem->description);
    const auto action = policyAction(actionName);
    if (!action)
        return errorResponse(400, u"action must be add_domain, remove_domain, add_application or remove_application"_s);
    const auto mutation = acceptedMutation({ *action, value });
    if (!mutation)
        return errorResponse(400, u"value must be a domain or a bundle identifier, with a dot in it"_s);
    return policyResponse(PolicyStore(database).apply(*mutation));
}

Response storeEvent(Database& database, const QByteArray& body)
{
    const auto event = readAgentEvent(body);
    if (!event)
        return errorResponse(400, event.error().description);
    const auto outcome = EventStore(database).store(*event, now());
    if (!outcome)
        return storeFailure(outcome.error());
    const bool isNew = *outcome == EventStore::Outcome::stored;
    return jsonResponse(isNew ? 201 : 200, { { "eventId", jsonText(event->eventId) }, { "stored", isNew } });
}

Response storeActivity(Database& database, const QByteArray& body)
{
    const auto period = readUploadedPeriod(body);
    if (!period)
        return errorResponse(400, period.error().description);
    const auto outcome = ActivityStore(database).store(*period, now());
    if (!outcome)
        return storeFailure(outcome.error());
    const bool isNew = *outcome == ActivityStore::Outcome::stored;
    return jsonResponse(isNew ? 201 : 200, { { "stored", isNew } });
}

} // namespace

std::vector<Route> apiRoutes(Database& database, const QByteArray& key)
{
    const auto guard = [key](const RequestHead& head, const Endpoints&) -> std::optional<Response> {
        if (bearsKey(head, key))
            return std::nullopt;
        Response response = errorResponse(401, u"The API key is missing or wrong"_s);
        response.headers.emplace_back("WWW-Authenticate", "Bearer");
        return response;
    };
    return {
        { "/api/focus-state", "GET", mebibyte, guard, [&database](const Request&) { return focusState(database); } },
        { "/api/focus-policy", "GET", mebibyte, guard, [&database](const Request&) { return policyResponse(PolicyStore(database).policy()); } },
        { "/api/focus-policy", "POST", mebibyte, guard, [&database](const Request& request) { return changePolicy(database, request.body); } },
        { "/api/codex/sessions/events", "POST", mebibyte, guard, [&database](const Request& request) { return storeEvent(database, request.body); } },
        { "/api/activity", "POST", longestActivity, guard, [&database](const Request& request) { return storeActivity(database, request.body); } },
    };
}

} // namespace orvanta::localservice
