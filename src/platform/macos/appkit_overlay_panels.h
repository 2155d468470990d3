#pragma once

#include "platform/overlay_panels.h"

namespace orvanta {

/// The covers as panels of AppKit's, with a window of Qt Quick's in the content view: a panel of Qt's own would choose its
/// level, behaviour and style itself.
class AppKitOverlayPanels : public OverlayPanels {
public:
    /// `contents` outlives the panels.
    explicit AppKitOverlayPanels(OverlayContentFactory& contents) : m_contents(contents) { }

    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override;

private:
    OverlayContentFactory& m_contents;
};

} // namespace orvanta
