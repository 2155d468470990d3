#pragma once

#include "harness/lifecycle/harness_lifecycle_event.h"
#include "service/focus_api_records.h"
#include "service/url_session.h"

#include <QString>
#include <QUrl>

namespace orvanta {

/// The client of the service's focus endpoints: a value of two fields, which may be copied and used from any thread. It
/// keeps no state and never retries. The session outlives it and its copies.
class FocusAPIClient {
public:
    template <typename T>
    using Completion = Callback<std::expected<T, ServiceFailure>>;

    /// `baseURL` is an origin; `token` is the API key, which is sent as it is, even if it is empty.
    FocusAPIClient(UrlSession& session, QUrl baseURL, QString token);

    [[nodiscard]] const QUrl& baseURL() const { return m_baseURL; }
    [[nodiscard]] const QString& token() const { return m_token; }

    // Each operation is one request of its own. `completed` is called once, from the event loop of `context`'s thread,
    // never before the operation has returned; not at all if `context` is gone by then.

    /// What the service knows of the user's work.
    void fetchFocusState(QObject* context, Completion<FocusStateResponse> completed) const;

    /// The blocking policy.
    void fetchPolicy(QObject* context, Completion<FocusPolicyResponse> completed) const;

    /// Asks for a change of the policy; gives the policy after it.
    void updatePolicy(const FocusPolicyMutation& mutation, QObject* context, Completion<FocusPolicyResponse> completed) const;

    /// Forwards one event of an AI agent's session. One attempt: whether to try again is the caller's to decide.
    void postSessionEvent(const HarnessLifecycleEvent& event, QObject* context, Completion<void> completed) const;

private:
    [[nodiscard]] HttpRequest request(const QByteArray& method, const QString& path, std::optional<QByteArray> body = std::nullopt) const;

    UrlSession* m_session;
    QUrl m_baseURL;
    QString m_token;
};

} // namespace orvanta
