#include "activity/activity_api_client.h"

#include "activity/activity_json.h"
#include "activity/merged_activity.h"

#include <cstdio>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds timeout { 10 };

void report(const QString& line)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(line));
}

/// Whether the periods have arrived. Says on standard error why not.
bool isDelivered(const UrlResult& result)
{
    if (!result) {
        report(u"API error: "_s + result.error().description);
        return false;
    }
    if (!result->statusCode)
        return false;
    if (*result->statusCode >= 200 && *result->statusCode <= 299)
        return true;
    report(u"API error: HTTP %1"_s.arg(*result->statusCode));
    return false;
}

} // namespace

ActivityAPIClient::ActivityAPIClient(UrlSession& session, QUrl endpoint, std::optional<QString> apiKey)
    : m_session(session)
    , m_endpoint(std::move(endpoint))
    , m_apiKey(std::move(apiKey))
{
}

void ActivityAPIClient::queue(AggregatedActivity activity)
{
    m_pendingData.push_back(std::move(activity));
    if (m_pendingData.size() > m_maxRetries) {
        m_pendingData.erase(m_pendingData.begin());
        report(u"Warning: Dropping oldest pending data due to repeated failures"_s);
    }
}

bool ActivityAPIClient::sendPending(const std::stop_token& stop)
{
    if (m_pendingData.empty())
        return true;
    auto body = encodeActivity(mergedActivity(m_pendingData));
    if (!body) {
        report(u"Encoding error: "_s + body.error().description);
        return false;
    }
    const UrlResult result = m_session.sendAndWait(request(*std::move(body)), stop);
    // Nobody waits for the outcome of what was given up.
    if (stop.stop_requested() && !result)
        return false;
    if (!isDelivered(result))
        return false;
    m_pendingData.clear();
    return true;
}

HttpRequest ActivityAPIClient::request(QByteArray body) const
{
    HttpRequest request {
        .url = m_endpoint,
        .method = "POST",
        .headers = { { "Content-Type", "application/json" } },
        .body = std::move(body),
        .timeout = timeout,
    };
    if (m_apiKey)
        request.headers.emplace_back("Authorization", "Bearer " + m_apiKey->toUtf8());
    return request;
}

} // namespace orvanta
