#pragma once

#include "platform/overlay_panels.h"

#include <QObject>

#include <functional>
#include <memory>

namespace orvanta {

class CoverWindow;

/// The covers of one window system. Keeps one window with a fresh blocking screen ready, hidden, so that a display is covered
/// within a frame of being asked for, the first time as well.
class CoverPanels : public QObject, public OverlayPanels {
    Q_OBJECT

public:
    using MakeWindow = std::function<std::unique_ptr<CoverWindow>()>;

    explicit CoverPanels(MakeWindow makeWindow);
    ~CoverPanels() override;

    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override;

private:
    void makeSpareWindow();

    MakeWindow m_makeWindow;
    std::unique_ptr<CoverWindow> m_spareWindow; ///< hidden, with content, on the primary display
    qsizetype m_made = 0;
};

} // namespace orvanta
