#pragma once

#include "platform/extension_manager.h"

#include <memory>

namespace orvanta {

/// Requests to the shared system-extension manager, each with a delegate of its own: the manager does not keep it, we do.
class SystemExtensionManager : public ExtensionManager {
public:
    SystemExtensionManager();
    ~SystemExtensionManager() override;

    void requestProperties(const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed) override;
    void activate(const QString& identifier, ActivationEvents events) override;
    [[nodiscard]] QString hostBundlePath() override;

private:
    class Requests;

    std::shared_ptr<Requests> m_requests; ///< those that have not ended
};

} // namespace orvanta
