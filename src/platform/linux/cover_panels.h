#pragma once

#include "platform/overlay_panels.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QTimer>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

class CoverWindow;

/// The covers of one window system. Keeps one window with a fresh blocking screen ready, hidden, so that a display is covered
/// within a frame of being asked for, the first time as well.
class CoverPanels : public QObject, public OverlayPanels {
    Q_OBJECT

public:
    using MakeWindow = std::function<std::unique_ptr<CoverWindow>()>;
    using FrameInFront = std::function<std::optional<QRect>()>;

    explicit CoverPanels(MakeWindow makeWindow);
    ~CoverPanels() override;

    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override;

    /// From now on a cover goes where what it covers is taken when displays come or go. `frameInFront` gives the frame of the
    /// display with the window in front or beneath a cover; nothing where that is not known.
    void goWithWindowInFront(FrameInFront frameInFront);

private:
    void makeSpareWindow();
    void watchDisplays();
    void followWindowInFront();

    MakeWindow m_makeWindow;
    std::unique_ptr<CoverWindow> m_spareWindow; ///< hidden, with content, on the primary display
    qsizetype m_made = 0;
    std::vector<QPointer<CoverWindow>> m_windows; ///< of the panels that were made
    FrameInFront m_frameInFront;
    QTimer m_settling;
    std::size_t m_looks = 0; ///< taken since the displays changed
};

} // namespace orvanta
