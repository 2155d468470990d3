#include "app/polling_task.h"

namespace orvanta {

PollingTask::PollingTask(FocusAPIClient client, Callback<const Answer&> answered, std::chrono::milliseconds pause)
    : m_client(std::move(client))
    , m_answered(std::move(answered))
    , m_sleep(this)
{
    m_sleep.setSingleShot(true);
    m_sleep.setTimerType(Qt::PreciseTimer);
    m_sleep.setInterval(pause);
    connect(&m_sleep, &QTimer::timeout, this, &PollingTask::ask);
}

void PollingTask::start()
{
    ask();
}

void PollingTask::ask()
{
    m_client.fetchFocusState(this, [this](const Answer& answer) {
        m_answered(answer);
        m_sleep.start();
    });
}

} // namespace orvanta
