#include "service/focus_api_client.h"

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QUrl appendingPath(const QUrl& base, const QString& path)
{
    QString directory = base.path(QUrl::FullyEncoded);
    while (directory.endsWith(u'/'))
        directory.chop(1);
    QUrl url = base;
    url.setPath(directory + u'/' + path, QUrl::StrictMode);
    return url;
}

/// The body of an answer that counts as success.
std::expected<QByteArray, ServiceFailure> acceptedBody(UrlResult result)
{
    if (!result)
        return std::unexpected(ServiceFailure { std::move(result).error() });
    const std::optional<int> statusCode = result->statusCode;
    if (!statusCode)
        return std::unexpected(ServiceFailure { FocusAPIError::invalidResponse() });
    if (*statusCode < 200 || *statusCode > 299)
        return std::unexpected(ServiceFailure { FocusAPIError::server(*statusCode) });
    return std::move(result->body);
}

template <typename T>
Callback<UrlResult> decodingWith(std::expected<T, DecodeError> (*decode)(const QByteArray&), FocusAPIClient::Completion<T> completed)
{
    return [decode, completed = std::move(completed)](UrlResult result) mutable {
        const auto body = acceptedBody(std::move(result));
        if (!body)
            return completed(std::unexpected(body.error()));
        auto record = decode(*body);
        if (!record)
            return completed(std::unexpected(ServiceFailure { std::move(record).error() }));
        completed(*std::move(record));
    };
}

/// Completes with a failure to write the request, as late as with an answer.
template <typename T>
void failLater(QObject* context, FocusAPIClient::Completion<T> completed, EncodeError error)
{
    QMetaObject::invokeMethod(
        context,
        [completed = std::make_shared<FocusAPIClient::Completion<T>>(std::move(completed)), failure = ServiceFailure { error }] {
            (*completed)(std::unexpected(failure));
        },
        Qt::QueuedConnection);
}

} // namespace

FocusAPIClient::FocusAPIClient(UrlSession& session, QUrl baseURL, QString token)
    : m_session(&session)
    , m_baseURL(std::move(baseURL))
    , m_token(std::move(token))
{
}

void FocusAPIClient::fetchFocusState(QObject* context, Completion<FocusStateResponse> completed) const
{
    m_session->send(request("GET", u"api/focus-state"_s), context, decodingWith(decodeFocusState, std::move(completed)));
}

void FocusAPIClient::fetchPolicy(QObject* context, Completion<FocusPolicyResponse> completed) const
{
    m_session->send(request("GET", u"api/focus-policy"_s), context, decodingWith(decodeFocusPolicy, std::move(completed)));
}

void FocusAPIClient::updatePolicy(const FocusPolicyMutation& mutation, QObject* context, Completion<FocusPolicyResponse> completed) const
{
    auto body = encodeMutation(mutation);
    if (!body)
        return failLater(context, std::move(completed), body.error());
    m_session->send(request("POST", u"api/focus-policy"_s, *std::move(body)), context, decodingWith(decodeFocusPolicy, std::move(completed)));
}

void FocusAPIClient::postSessionEvent(const HarnessLifecycleEvent& event, QObject* context, Completion<void> completed) const
{
    auto body = encodeLifecycleEvent(event);
    if (!body)
        return failLater(context, std::move(completed), EncodeError {});
    m_session->send(
        request("POST", u"api/codex/sessions/events"_s, *std::move(body)), context, [completed = std::move(completed)](UrlResult result) mutable {
            const auto accepted = acceptedBody(std::move(result));
            completed(accepted ? std::expected<void, ServiceFailure>() : std::unexpected(accepted.error()));
        });
}

HttpRequest FocusAPIClient::request(const QByteArray& method, const QString& path, std::optional<QByteArray> body) const
{
    HttpRequest request {
        .url = appendingPath(m_baseURL, path),
        .method = method,
        .headers = { { "Authorization", "Bearer " + m_token.toUtf8() } },
        .body = std::move(body),
    };
    if (request.body)
        request.headers.emplace_back("Content-Type", "application/json");
    return request;
}

} // namespace orvanta
