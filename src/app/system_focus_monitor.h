#pragma once

#include "platform/callback.h"
#include "platform/system_focus.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <optional>

namespace orvanta {

/// Tells whether the operating system's Focus is on. It asks for what permissions it needs once, then looks at the Focus
/// every second for as long as it lives, and reports the first value and every change. No failure leaves it: without
/// authorisation the Focus counts as off, and one that is given later takes effect at the next look. Owned by the app
/// model; main thread only.
class SystemFocusMonitor : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultPause = std::chrono::seconds { 1 };

    /// `center` outlives the monitor.
    explicit SystemFocusMonitor(SystemFocus& center, std::chrono::milliseconds pause = defaultPause);

    /// Called with the new value. To be set before start().
    Callback<bool> onStatusChange;

    /// Starts asking and looking. A second call does nothing.
    void start();

private:
    void authorise();
    void look();
    [[nodiscard]] bool value() const;

    SystemFocus& m_center;
    bool m_isStarted = false;
    QTimer m_sleep; ///< runs on the monotonic clock
    std::optional<bool> m_lastReportedValue;
};

} // namespace orvanta
