#include "harness/lifecycle_connection.h"

#include <algorithm>

namespace orvanta {

namespace {

/// Whether a request may begin with `bytes`, of which there may be few.
bool mayBegin(std::string_view bytes)
{
    return lifecycleRequestStart.starts_with(bytes.substr(0, lifecycleRequestStart.size()));
}

} // namespace

LifecycleConnection::Verdict LifecycleConnection::take(std::string_view bytes)
{
    m_received += bytes.size();
    if (m_state != State::hopeless) {
        const std::size_t known = m_buffer.size();
        m_buffer.append(bytes);
        if (m_state == State::head) {
            // The end of the head may have begun in what was known before.
            const std::size_t begin = known - std::min(known, lifecycleHeadEnd.size() - 1);
            const std::size_t end = m_buffer.find(lifecycleHeadEnd, begin);
            if (end != std::string::npos) {
                m_bodyBegin = end + lifecycleHeadEnd.size();
                readHead();
            } else if (!mayBegin(m_buffer)) {
                m_state = State::hopeless;
            }
        }
        if (m_state == State::body && m_buffer.size() - m_bodyBegin >= m_head->contentLength)
            return Verdict::accepted;
        if (m_state == State::hopeless)
            m_buffer = {};
    }
    return m_received < lifecycleRequestLimit ? Verdict::needsMore : Verdict::refused;
}

void LifecycleConnection::readHead()
{
    m_head = parseLifecycleRequestHead(std::string_view(m_buffer).substr(0, m_bodyBegin - lifecycleHeadEnd.size()));
    const bool canComplete = m_head && m_head->contentLength <= lifecycleRequestLimit - m_bodyBegin;
    m_state = canComplete ? State::body : State::hopeless;
}

std::string_view LifecycleConnection::body() const
{
    return std::string_view(m_buffer).substr(m_bodyBegin, static_cast<std::size_t>(m_head->contentLength));
}

bool LifecycleConnection::hasExcess() const
{
    return m_received > m_bodyBegin + m_head->contentLength;
}

} // namespace orvanta
