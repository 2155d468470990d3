#include "settings/installed_application_source.h"

#include <memory>
#include <utility>

namespace orvanta {

InstalledApplicationSource::InstalledApplicationSource(Scan scan, QObject* parent) : QObject(parent), m_scan(std::move(scan))
{
    // A second editor need not wait for the scan of one that was closed at once.
    m_pool.setMaxThreadCount(2);
}

InstalledApplicationSource::~InstalledApplicationSource()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void InstalledApplicationSource::scan(QObject* receiver, std::function<void(Result)> found)
{
    m_pool.start([this, receiver = QPointer(receiver), found = std::move(found)] {
        auto result = std::make_shared<Result>();
        result->applications = m_scan();
        result->filter = ApplicationFilter(result->applications);
        // To ourselves, who live on the main thread until all scans are done; whether the receiver still does is known there.
        QMetaObject::invokeMethod(
            this,
            [receiver, found, result] {
                if (receiver)
                    found(std::move(*result));
            },
            Qt::QueuedConnection);
    });
}

} // namespace orvanta
