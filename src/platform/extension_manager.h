#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <QString>

#include <vector>

namespace orvanta {

/// What the system knows about one installed version of an extension.
struct ExtensionProperties {
    bool isEnabled = false;

    bool operator==(const ExtensionProperties&) const = default;
};

/// How a request to activate an extension ended well. The raw values are the system's.
enum class ActivationResult { completed = 0, willCompleteAfterReboot = 1 };

/// What becomes of an extension that is installed in another version. The raw values are the system's.
enum class ReplacementAction { cancel = 0, replace = 1 };

/// Who hears how a request to activate an extension goes. Any number of calls of the first two, then one of the others.
struct ActivationEvents {
    /// Asked when another version is installed.
    MoveOnlyFunction<ReplacementAction()> replacing;
    Callback<> needsUserApproval;
    Callback<ActivationResult> finished;
    Callback<PlatformError> failed;
};

/// Installs and looks up the privileged part of the program: a system extension on macOS, orvanta-filterd on Linux.
/// Requests are made on the main thread; several may be pending at once. Every answer comes after the operation has
/// returned, in the system's own order, on any thread. A manager that is destroyed answers nothing more.
class ExtensionManager {
public:
    virtual ~ExtensionManager() = default;

    /// Asks what is installed under `identifier`: calls `found` with a list, which is empty when nothing is, or
    /// `failed`, once.
    virtual void requestProperties(const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed) = 0;

    /// Asks that the extension be installed and enabled. The system may ask the user first, for as long as it takes.
    virtual void activate(const QString& identifier, ActivationEvents events) = 0;

    /// Where the running application is installed: the path of its bundle on macOS. On Linux a copy that runs from
    /// its installed prefix is reported at the place of an installed bundle, every other one under its real path.
    [[nodiscard]] virtual QString hostBundlePath() = 0;
};

} // namespace orvanta
