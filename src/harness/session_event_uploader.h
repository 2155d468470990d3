#pragma once

#include "service/focus_api_client.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>

namespace orvanta {

/// Sends session events to the service, one after the other in the order in which they came, and keeps those that could
/// not be sent. After a failure it pauses, longer each time, and says so. What waits is bounded: the oldest make room.
/// An event that the service refuses for what it is is given up, since it would be refused for ever. Main thread.
class SessionEventUploader : public QObject {
    Q_OBJECT

public:
    struct Limits {
        std::size_t events = 1000;
        std::size_t bytes = std::size_t { 32 } * 1024 * 1024;
        std::chrono::milliseconds firstPause = std::chrono::seconds { 1 };
        std::chrono::milliseconds longestPause = std::chrono::minutes { 5 };
    };

    /// `report` is given lines for the user.
    SessionEventUploader(FocusAPIClient client, std::function<void(const QString& line)> report, Limits limits);

    void add(HarnessLifecycleEvent event);

    /// How many events have not reached the service.
    [[nodiscard]] std::size_t waiting() const { return m_queue.size(); }
    /// Whether it waits before it tries again.
    [[nodiscard]] bool isPausing() const { return m_pause.isActive(); }

Q_SIGNALS:
    /// An event has left the queue, or could not be sent for now: `failure` says why, and is absent for success.
    void tried(const orvanta::HarnessLifecycleEvent& event, const std::optional<QString>& failure);

private:
    struct Waiting {
        HarnessLifecycleEvent event;
        std::size_t bytes;
    };

    void sendNext();
    void take(const std::expected<void, ServiceFailure>& result);
    void removeOldest();
    void makeRoom();

    FocusAPIClient m_client;
    std::function<void(const QString&)> m_report;
    Limits m_limits;
    std::deque<Waiting> m_queue;
    std::size_t m_bytes = 0;
    std::size_t m_lost = 0; ///< since the last success
    int m_failures = 0;     ///< in a row
    bool m_isSending = false;
    QTimer m_pause;
};

/// How long to wait after so many failures in a row: twice as long each time, within bounds.
[[nodiscard]] std::chrono::milliseconds pauseAfter(int failures, const SessionEventUploader::Limits& limits);

/// Whether `failure` is about the event itself, so that sending it again is of no use.
[[nodiscard]] bool isAboutTheEvent(const ServiceFailure& failure);

} // namespace orvanta
