#include "platform/linux/glib_events.h"

#include <QAbstractEventDispatcher>

#include <chrono>

#include <glib.h>

namespace orvanta {

GlibEvents::GlibEvents()
{
    const QAbstractEventDispatcher* events = QAbstractEventDispatcher::instance();
    if (events && events->inherits("QEventDispatcherGlib"))
        return;
    QObject::connect(&m_pump, &QTimer::timeout, &m_pump, [] {
        while (g_main_context_iteration(nullptr, FALSE)) { }
    });
    m_pump.start(std::chrono::seconds(1));
}

} // namespace orvanta
