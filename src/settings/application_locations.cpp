#include "settings/application_locations.h"

#include <utility>

namespace orvanta {

ApplicationLocations::ApplicationLocations(Locate locate, QObject* parent) : QObject(parent), m_locate(std::move(locate))
{
    m_pool.setMaxThreadCount(1);
}

ApplicationLocations::~ApplicationLocations()
{
    m_pool.clear();
    m_pool.waitForDone();
}

QUrl ApplicationLocations::location(const QString& bundleIdentifier)
{
    const auto known = m_known.constFind(bundleIdentifier);
    if (known != m_known.constEnd())
        return *known;
    lookUp(bundleIdentifier);
    return {};
}

void ApplicationLocations::refresh()
{
    for (const QString& bundleIdentifier : m_known.keys())
        lookUp(bundleIdentifier);
}

void ApplicationLocations::lookUp(const QString& bundleIdentifier)
{
    if (m_pending.contains(bundleIdentifier))
        return;
    m_pending.insert(bundleIdentifier);
    m_pool.start([this, bundleIdentifier] {
        const auto url = m_locate(bundleIdentifier);
        QMetaObject::invokeMethod(this, [this, bundleIdentifier, url] { take(bundleIdentifier, url); }, Qt::QueuedConnection);
    });
}

void ApplicationLocations::take(const QString& bundleIdentifier, const std::optional<QUrl>& url)
{
    m_pending.remove(bundleIdentifier);
    const QUrl found = url.value_or(QUrl());
    if (std::exchange(m_known[bundleIdentifier], found) != found)
        Q_EMIT locationChanged(bundleIdentifier);
}

} // namespace orvanta
