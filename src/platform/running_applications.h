#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// Whether an application shows itself to the user as one (a window or a Dock icon of its own).
enum class ActivationPolicy { regular, accessory };

/// One running application. Both texts are absent when the system does not know them.
struct RunningApplication {
    std::optional<QString> bundleIdentifier;
    std::optional<QString> localizedName;
    ActivationPolicy activationPolicy = ActivationPolicy::regular;

    bool operator==(const RunningApplication&) const = default;
};

/// The applications that run now. Each thread that needs it has an instance of its own.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    /// The application in front; absent when none is.
    [[nodiscard]] virtual std::optional<RunningApplication> frontmost() = 0;

    /// Every running application, in the system's order.
    [[nodiscard]] virtual std::vector<RunningApplication> all() = 0;

    /// Hides every running instance of the application, in the system's order. When it returns, the window system
    /// has taken the wish: windows that are ordered out afterwards do not bring the application back to the front.
    /// An identifier that nothing bears is no error.
    virtual void hide(const QString& bundleIdentifier) = 0;
};

} // namespace orvanta
