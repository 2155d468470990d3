#pragma once

#include "blocking/installed_application_catalog.h"
#include "settings/application_filter.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <vector>

namespace orvanta {

/// Scans for installed applications away from the main thread, each time anew. Made once, by main; waits at its end for
/// the scans that still run.
class InstalledApplicationSource : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made once, by main")

public:
    /// The applications that may be blocked, in the order in which they are shown. Runs on other threads, perhaps on two
    /// at once.
    using Scan = std::function<std::vector<InstalledApplication>()>;

    struct Result {
        std::vector<InstalledApplication> applications;
        ApplicationFilter filter; ///< over these applications
    };

    explicit InstalledApplicationSource(Scan scan, QObject* parent = nullptr);
    ~InstalledApplicationSource() override;

    /// Starts a scan. `found` is called with its result on the main thread, unless `receiver` is gone by then.
    void scan(QObject* receiver, std::function<void(Result)> found);

private:
    Scan m_scan;
    QThreadPool m_pool;
};

} // namespace orvanta
