#pragma once

#include "platform/desktop_notices.h"
#include "platform/linux/wayland/compositor_windows.h"
#include "platform/portable/observers.h"

#include <QTimer>

namespace orvanta {

/// What a Wayland desktop lacks, by the source of windows in use: asked again when that goes or comes.
class WaylandDesktopNotices final : public DesktopNotices {
public:
    /// `windows` outlives this.
    explicit WaylandDesktopNotices(CompositorWindows& windows);
    ~WaylandDesktopNotices() override;

    [[nodiscard]] Subscription observe(Callback<QStringList> changed) override { return m_observers.add(std::move(changed)); }

private:
    void tell();

    CompositorWindows& m_windows;
    Observers<QStringList> m_observers;
    QStringList m_told;
    QTimer m_settling;
};

} // namespace orvanta
