#include "blocking/blocking_coordinator.h"

#include "platform/main_thread.h"
#include "platform/running_applications.h"
#include "platform/screens.h"

#include <QPointer>

#include <algorithm>

namespace orvanta {

BlockingCoordinator::BlockingCoordinator(Screens& screens, OverlayPanels& overlayPanels, RunningApplications& runningApplications)
    : m_screens(screens)
    , m_overlayPanels(overlayPanels)
    , m_runningApplications(runningApplications)
{
}

BlockingCoordinator::~BlockingCoordinator() = default;

void BlockingCoordinator::present(const BlockedTarget& target, std::uint32_t screenNumber)
{
    requireMainThread("BlockingCoordinator::present");
    const auto screens = m_screens.all();
    const auto asked = std::ranges::find(screens, screenNumber, &Screen::number);
    const std::optional<Screen> screen = asked != screens.end() ? std::optional(*asked) : m_screens.main();
    if (!screen)
        return;

    auto& panel = m_panels[screenNumber];
    if (!panel)
        panel = m_overlayPanels.make();
    panel->setFrame(screen->frame);
    panel->setContent(acknowledgeAction(target));
    panel->orderFront();
}

void BlockingCoordinator::dismiss()
{
    requireMainThread("BlockingCoordinator::dismiss");
    for (const auto& [number, panel] : m_panels)
        panel->orderOut();
}

std::optional<Callback<>> BlockingCoordinator::acknowledgeAction(const BlockedTarget& target)
{
    const auto* application = std::get_if<BlockedTarget::Application>(&target.value);
    if (!application)
        return std::nullopt;
    return [self = QPointer(this), identifier = application->bundleIdentifier] {
        if (!self)
            return;
        self->m_runningApplications.hide(identifier);
        self->dismiss();
    };
}

} // namespace orvanta
