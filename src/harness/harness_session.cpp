#include "harness/harness_session.h"

#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

HarnessSession::HarnessSession(FocusAPIClient client, FileSystem& files, Report report, Settings settings)
    : m_settings(settings)
    , m_files(files)
    , m_report(std::move(report))
    , m_uploader(std::move(client), m_report, settings.upload)
    , m_receiver(std::make_unique<LocalLifecycleReceiver>([this](AIHarness harness, const QByteArray& body) { post(harness, body); }, settings.port))
{
    connect(&m_portTimer, &QTimer::timeout, this, &HarnessSession::start);
}

HarnessSession::~HarnessSession()
{
    m_receiver.reset();
}

void HarnessSession::start()
{
    if (!m_receiver)
        return;
    m_receiver->start();
    if (m_receiver->isListening()) {
        m_portTimer.stop();
        Q_EMIT listening();
        return;
    }
    if (!std::exchange(m_hasReportedPort, true))
        m_report(u"port %1 is in use by another program; waiting for it"_s.arg(m_settings.port));
    m_portTimer.start(m_settings.portPause);
}

void HarnessSession::stopReceiving()
{
    m_portTimer.stop();
    m_receiver.reset();
}

void HarnessSession::post(AIHarness harness, const QByteArray& body)
{
    const auto receivedAt = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const auto size = static_cast<std::size_t>(body.size());
    if (m_inbox.bodies >= m_settings.mostBodies || m_inbox.bytes + size > m_settings.mostBytes) {
        ++m_inbox.lost;
        return;
    }
    ++m_inbox.bodies;
    m_inbox.bytes += size;
    QMetaObject::invokeMethod(this, [this, harness, body, receivedAt] { take(harness, body, receivedAt); }, Qt::QueuedConnection);
}

void HarnessSession::take(AIHarness harness, const QByteArray& body, ReceiptTime receivedAt)
{
    --m_inbox.bodies;
    m_inbox.bytes -= static_cast<std::size_t>(body.size());
    if (const std::size_t lost = m_inbox.lost.exchange(0); lost > 0)
        m_report(u"%1 hooks came too fast and were lost"_s.arg(lost));
    auto event = decodeHookPayload(body, harness, receivedAt, m_files);
    if (!event)
        return; // of an event that is not uploaded, or not an agent's at all
    Q_EMIT received(*event);
    m_uploader.add(*std::move(event));
}

} // namespace orvanta
