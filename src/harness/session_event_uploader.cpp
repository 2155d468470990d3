#include "harness/session_event_uploader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

std::size_t memoryOf(const QString& text)
{
    return static_cast<std::size_t>(text.size()) * sizeof(QChar);
}

std::size_t memoryOf(const std::optional<QString>& text)
{
    return text ? memoryOf(*text) : 0;
}

std::size_t memoryOf(const HarnessLifecycleEvent& event)
{
    std::size_t bytes = sizeof event + memoryOf(event.eventId) + memoryOf(event.sessionId) + memoryOf(event.cwd) + memoryOf(event.model)
        + memoryOf(event.permissionMode) + memoryOf(event.transcriptPath) + memoryOf(event.prompt);
    if (event.openingMessages) {
        for (const HarnessOpeningMessage& message : *event.openingMessages)
            bytes += sizeof message + memoryOf(message.content) + memoryOf(message.occurredAt);
    }
    return bytes;
}

QString events(std::size_t count)
{
    return count == 1 ? u"1 event"_s : u"%1 events"_s.arg(count);
}

} // namespace

std::chrono::milliseconds pauseAfter(int failures, const SessionEventUploader::Limits& limits)
{
    std::chrono::milliseconds pause = limits.firstPause;
    for (int count = 1; count < failures && pause < limits.longestPause; ++count)
        pause *= 2;
    return std::min(pause, limits.longestPause);
}

bool isAboutTheEvent(const ServiceFailure& failure)
{
    if (std::holds_alternative<EncodeError>(failure.cause))
        return true;
    const auto* answer = std::get_if<FocusAPIError>(&failure.cause);
    if (!answer || !answer->statusCode())
        return false;
    // Malformed, too large, of the wrong type, not understood. Everything else can mend: a key, an address, a service.
    constexpr std::array statuses { 400, 413, 415, 422 };
    return std::ranges::find(statuses, *answer->statusCode()) != statuses.end();
}

SessionEventUploader::SessionEventUploader(FocusAPIClient client, std::function<void(const QString&)> report, Limits limits)
    : m_client(std::move(client))
    , m_report(std::move(report))
    , m_limits(limits)
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &SessionEventUploader::sendNext);
}

void SessionEventUploader::add(HarnessLifecycleEvent event)
{
    const std::size_t bytes = memoryOf(event);
    m_queue.push_back({ std::move(event), bytes });
    m_bytes += bytes;
    makeRoom();
    if (!m_isSending && !m_pause.isActive())
        sendNext();
}

void SessionEventUploader::makeRoom()
{
    while (m_queue.size() > m_limits.events || (m_bytes > m_limits.bytes && m_queue.size() > 1)) {
        // What is on its way may arrive all the same; the next one makes room then.
        const std::size_t index = m_isSending && m_queue.size() > 1 ? 1 : 0;
        m_bytes -= m_queue[index].bytes;
        m_queue.erase(m_queue.begin() + static_cast<std::ptrdiff_t>(index));
        if (m_lost++ == 0)
            m_report(u"too many events wait for the service; the oldest are lost"_s);
    }
}

void SessionEventUploader::sendNext()
{
    if (m_queue.empty() || m_isSending)
        return;
    m_isSending = true;
    m_client.postSessionEvent(m_queue.front().event, this, [this](const std::expected<void, ServiceFailure>& result) { take(result); });
}

void SessionEventUploader::removeOldest()
{
    m_bytes -= m_queue.front().bytes;
    m_queue.pop_front();
}

void SessionEventUploader::take(const std::expected<void, ServiceFailure>& result)
{
    m_isSending = false;
    const HarnessLifecycleEvent event = m_queue.front().event;
    if (result) {
        removeOldest();
        if (m_failures > 0)
            m_report(u"the service is reached again"_s + (m_lost > 0 ? u"; %1 were lost meanwhile"_s.arg(events(m_lost)) : QString()));
        m_failures = 0;
        m_lost = 0;
        Q_EMIT tried(event, std::nullopt);
    } else if (isAboutTheEvent(result.error())) {
        removeOldest();
        m_report(u"%1: the event %2 is given up"_s.arg(result.error().description(), event.eventId));
        Q_EMIT tried(event, result.error().description());
    } else {
        const auto pause = pauseAfter(++m_failures, m_limits);
        m_report(u"%1: %2 wait; the next attempt is in %3 s"_s.arg(result.error().description(), events(m_queue.size()))
                .arg(std::chrono::duration_cast<std::chrono::seconds>(pause).count()));
        m_pause.start(pause);
        Q_EMIT tried(event, result.error().description());
        return;
    }
    sendNext();
}

} // namespace orvanta
