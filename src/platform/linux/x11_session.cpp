#include "platform/linux/x11_session.h"

#include <QDebug>

namespace orvanta {

X11Windows* X11Session::windows()
{
    if (m_windows)
        m_windows->takeEvents();
    if (m_connection && m_connection->isLost()) {
        m_windows.reset();
        m_connection.reset();
    }
    if (!m_connection) {
        auto opened = X11Connection::open();
        if (!opened) {
            if (!std::exchange(m_isFailureReported, true))
                qWarning("%s", qUtf8Printable(opened.error().description));
            return nullptr;
        }
        m_isFailureReported = false;
        m_connection = std::move(*opened);
        m_windows = std::make_unique<X11Windows>(*m_connection, m_memory);
    }
    return m_windows.get();
}

} // namespace orvanta
