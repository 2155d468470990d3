#pragma once

#include "platform/linux/cover_panels.h"
#include "platform/linux/cover_window.h"
#include "platform/linux/wayland/layer_shell.h"

#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <cstddef>

namespace orvanta {

/// The cover where the compositor has layers for such things (KWin, and all that is built on wlroots). The compositor itself keeps
/// it above full-screen windows, on every workspace, and gives it the keyboard, for which it is asked again where
/// it has not, or loses it. If after ten seconds the cover is not shown, or has no keyboard, standard error says so, once a presentation.
class LayerCoverWindow final : public CoverWindow {
    Q_OBJECT

public:
    /// `contents` outlives the window.
    LayerCoverWindow(OverlayContentFactory& contents, std::shared_ptr<const LayerShell> shell);
    ~LayerCoverWindow() override;

    void prepare() override;
    void present() override;
    void withdraw() override;

protected:
    void followDisplays() override;

private:
    void takeRole();
    void loseRole();
    void watch();
    void check();

    std::shared_ptr<const LayerShell> m_shell;
    std::unique_ptr<LayerSurface> m_role;
    QPointer<QScreen> m_covered; ///< the display that it was taken for
    bool m_isWanted = false;     ///< presented and not withdrawn, also while there is no display for it
    QTimer m_watch;
    std::size_t m_checks = 0; ///< made since the presentation
};

/// The covers there.
class LayerOverlayPanels final : public CoverPanels {
    Q_OBJECT

public:
    /// `contents` outlives the panels.
    LayerOverlayPanels(OverlayContentFactory& contents, std::unique_ptr<LayerShell> shell);
};

} // namespace orvanta
