#pragma once

#include "blocking/overlay_presenting.h"

#include "platform/callback.h"
#include "platform/overlay_panels.h"

#include <QObject>

#include <map>
#include <memory>
#include <optional>

namespace orvanta {

class RunningApplications;
class Screens;

/// Puts the blocking screen over a display and takes it away again. One panel a display number, made at its first
/// presentation and used again from then on. Owned by the app model; main thread only.
class BlockingCoordinator : public QObject, public OverlayPresenting {
    Q_OBJECT

public:
    BlockingCoordinator(Screens& screens, OverlayPanels& overlayPanels, RunningApplications& runningApplications);
    ~BlockingCoordinator() override;

    /// Shows a fresh blocking screen on the display, over its full frame. An unknown number takes the main display but
    /// stays filed under the number asked for; without any display nothing happens.
    void present(const BlockedTarget& target, std::uint32_t screenNumber) override;

    /// Hides every panel. They stay, hidden, for the next presentation.
    void dismiss() override;

private:
    /// What the button does: hides every running instance of the application, then every panel. A domain has no button.
    [[nodiscard]] std::optional<Callback<>> acknowledgeAction(const BlockedTarget& target);

    Screens& m_screens;
    OverlayPanels& m_overlayPanels;
    RunningApplications& m_runningApplications;
    std::map<std::uint32_t, std::unique_ptr<OverlayPanel>> m_panels;
};

} // namespace orvanta
