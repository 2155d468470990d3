#pragma once

#include "platform/motion_preference.h"
#include "platform/portable/observers.h"

#include <QObject>

#include <memory>
#include <vector>

namespace orvanta {

class MotionSource;

/// The running desktop's own setting for animations: KDE's on KDE, the GNOME interface settings on the desktops that
/// share them. Where the desktop is neither, whichever of the two there is may ask for less motion. Main thread only.
class DesktopMotionPreference : public QObject, public MotionPreference {
    Q_OBJECT

public:
    /// The desktop is the one that $XDG_CURRENT_DESKTOP names.
    DesktopMotionPreference();
    ~DesktopMotionPreference() override;

    [[nodiscard]] bool reduceMotion() const override { return m_reduceMotion; }
    [[nodiscard]] Subscription observe(Callback<bool> changed) override;

private:
    void update();

    std::vector<std::unique_ptr<MotionSource>> m_sources;
    bool m_reduceMotion = false;
    Observers<bool> m_observers;
};

} // namespace orvanta
