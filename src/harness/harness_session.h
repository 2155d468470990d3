#pragma once

#include "harness/hook_payload.h"
#include "harness/local_lifecycle_receiver.h"
#include "harness/session_event_uploader.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

namespace orvanta {

/// The whole way of an event, as `orvanta-harness run` has it: received in the receiver's thread, decoded and uploaded in
/// the main one. What waits between the two is bounded; what finds no room is lost and reported.
class HarnessSession : public QObject {
    Q_OBJECT

public:
    struct Settings {
        std::uint16_t port = LocalLifecycleReceiver::defaultPort;
        std::chrono::milliseconds portPause = std::chrono::seconds { 5 }; ///< until a busy port is tried again
        std::size_t mostBodies = 1000;                                    ///< that may wait to be decoded
        std::size_t mostBytes = std::size_t { 64 } * 1024 * 1024;
        SessionEventUploader::Limits upload = {};
    };
    using Report = std::function<void(const QString& line)>;

    /// `report` is given lines for the user, in the main thread.
    HarnessSession(FocusAPIClient client, FileSystem& files, Report report, Settings settings);
    ~HarnessSession() override;

    /// Begins to listen; tries again and again while another program has the port.
    void start();
    /// Receives nothing any more. What was received is still uploaded.
    void stopReceiving();

    [[nodiscard]] bool isListening() const { return m_receiver && m_receiver->isListening(); }
    [[nodiscard]] std::uint16_t port() const { return m_receiver ? m_receiver->port() : 0; }
    [[nodiscard]] SessionEventUploader& uploader() { return m_uploader; }

Q_SIGNALS:
    void listening();
    /// A body was decoded and waits to be uploaded.
    void received(const orvanta::HarnessLifecycleEvent& event);

private:
    struct Inbox {
        std::atomic<std::size_t> bodies = 0;
        std::atomic<std::size_t> bytes = 0;
        std::atomic<std::size_t> lost = 0;
    };

    void post(AIHarness harness, const QByteArray& body); ///< in the receiver's thread
    void take(AIHarness harness, const QByteArray& body, ReceiptTime receivedAt);

    Settings m_settings;
    FileSystem& m_files;
    Report m_report;
    SessionEventUploader m_uploader;
    Inbox m_inbox;
    QTimer m_portTimer;
    bool m_hasReportedPort = false;
    std::unique_ptr<LocalLifecycleReceiver> m_receiver; ///< goes first, and its thread with it
};

} // namespace orvanta
