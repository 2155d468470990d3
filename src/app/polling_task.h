#pragma once

#include "platform/callback.h"
#include "service/focus_api_client.h"

#include <QObject>
#include <QTimer>

#include <chrono>

namespace orvanta {

/// Asks the service for the focus state, hands the answer on, sleeps, and asks again, for as long as it lives. The pause
/// is the same after a success and after a failure. Owned by the app model; main thread only.
class PollingTask : public QObject {
    Q_OBJECT

public:
    using Answer = std::expected<FocusStateResponse, ServiceFailure>;

    static constexpr std::chrono::milliseconds defaultPause = std::chrono::seconds { 3 };

    PollingTask(FocusAPIClient client, Callback<const Answer&> answered, std::chrono::milliseconds pause = defaultPause);

    /// Makes the first request at once.
    void start();

private:
    void ask();

    FocusAPIClient m_client;
    Callback<const Answer&> m_answered;
    QTimer m_sleep; ///< runs on the monotonic clock
};

} // namespace orvanta
