#pragma once

#include "platform/descriptor.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace orvanta {

/// Turns SIGTERM and SIGINT into a signal of the event loop, for the rest of the process's life. One a process.
class EndSignals : public QObject {
    Q_OBJECT

public:
    EndSignals();

Q_SIGNALS:
    void asked();

private:
    Descriptor m_wakes;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace orvanta
