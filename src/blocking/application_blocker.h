#pragma once

#include "platform/subscription.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace orvanta {

class ActivationMonitor;
class OverlayPresenting;
class Screens;

/// Watches which application comes to the front and has the screen covered while a blocked one is there. What focus is
/// and which applications are blocked it is told by the app model, which owns it. Main thread only.
class ApplicationBlocker : public QObject {
    Q_OBJECT

public:
    using BlockedBundleIdentifiers = std::function<QSet<QString>()>;

    /// `blockedBundleIdentifiers` is asked afresh at every activation.
    ApplicationBlocker(
        BlockedBundleIdentifiers blockedBundleIdentifiers, OverlayPresenting& overlay, ActivationMonitor& activationMonitor, Screens& screens);
    ~ApplicationBlocker() override;

    /// Begins to watch, for the rest of its life. A second call does nothing.
    void startObserving();

    /// Written by the app model at each change. Nothing is presented or dismissed until the next activation.
    bool focusActive = false;

    /// The decision step, made for every activation. Without an identifier nothing happens. A blocked application under
    /// focus is covered anew each time; any other activation takes the cover away, except that of the very application
    /// it was presented for.
    void handleActivation(const std::optional<QString>& bundleIdentifier, std::uint32_t screenNumber);

private:
    void decideLater(std::optional<QString> bundleIdentifier);

    BlockedBundleIdentifiers m_blockedBundleIdentifiers;
    OverlayPresenting& m_overlay;
    ActivationMonitor& m_activationMonitor;
    Screens& m_screens;
    Subscription m_observer;
    std::optional<QString> m_activeBlockedBundleIdentifier; ///< what the cover was last presented for
};

} // namespace orvanta
