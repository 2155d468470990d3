#pragma once

#include "activity/activity_sending.h"
#include "service/url_session.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace orvanta {

/// Uploads finished periods, all that wait as one body. They wait in memory alone. Made by the app model and held by its
/// tracker, on whose thread it works; the session outlives it.
class ActivityAPIClient final : public ActivitySending {
public:
    /// `endpoint` is complete; without `apiKey` the requests carry no "Authorization" header.
    ActivityAPIClient(UrlSession& session, QUrl endpoint, std::optional<QString> apiKey);

    /// Ten periods wait at most; the oldest makes room, and standard error says so.
    void queue(AggregatedActivity activity) override;

    /// What goes wrong is said on standard error; the periods then stay for the next attempt.
    [[nodiscard]] bool sendPending(const std::stop_token& stop = {}) override;

    /// Oldest first.
    [[nodiscard]] const std::vector<AggregatedActivity>& pendingData() const { return m_pendingData; }

private:
    [[nodiscard]] HttpRequest request(QByteArray body) const;

    UrlSession& m_session;
    std::vector<AggregatedActivity> m_pendingData;
    std::size_t m_maxRetries = 10; ///< counts periods, not attempts
    QUrl m_endpoint;
    std::optional<QString> m_apiKey;
};

} // namespace orvanta
