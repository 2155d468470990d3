#pragma once

#include <QObject>

class QSocketNotifier;

namespace orvanta::localservice {

/// Turns SIGTERM and SIGINT, for as long as it lives, into a signal of the event loop. One at a time; owned by what serves.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    QSocketNotifier* m_notifier = nullptr; // its child
};

} // namespace orvanta::localservice
