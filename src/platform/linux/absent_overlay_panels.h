#pragma once

#include "platform/overlay_panels.h"

#include <QtGlobal>

namespace orvanta {

/// The covers of a desktop that lets no client stand above others: none. Each one that should have been shown is said on standard
/// error.
class AbsentOverlayPanels final : public OverlayPanels {
public:
    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override { return std::make_unique<Panel>(); }

private:
    class Panel final : public OverlayPanel {
    public:
        void setFrame(const QRect& /*frame*/) override { }
        void setContent(std::optional<Callback<>> /*acknowledge*/) override { }
        void orderFront() override { qWarning("The display is not covered: this desktop has no place for a cover"); }
        void orderOut() override { }
    };
};

} // namespace orvanta
