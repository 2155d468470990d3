#pragma once

#include "platform/system_focus.h"

#include <QObject>

#include <memory>
#include <vector>

namespace orvanta {

class FocusSource;

/// The desktop's Do Not Disturb: that of whichever notification service runs in this session. Nobody has to be asked for
/// leave, so the program is authorised exactly while there is such a service. Each of them tells of its changes, so that
/// looking costs nothing. Main thread only.
class DesktopSystemFocus : public QObject, public SystemFocus {
    Q_OBJECT

public:
    /// Which desktop runs is told by $XDG_CURRENT_DESKTOP and by the names on the session bus.
    DesktopSystemFocus();
    ~DesktopSystemFocus() override;

    void requestNotificationPermission(Callback<const Result<bool>&> answered) override;
    void requestAuthorisation(Callback<FocusAuthorisation> answered) override;
    [[nodiscard]] FocusAuthorisation authorisation() const override;
    [[nodiscard]] std::optional<bool> isFocused() const override;

private:
    std::vector<std::unique_ptr<FocusSource>> m_sources;
};

} // namespace orvanta
