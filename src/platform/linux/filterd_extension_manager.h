#pragma once

#include "platform/extension_manager.h"

#include <QObject>

#include <memory>

namespace orvanta {

/// The extension is orvanta-filterd, which polkit lets an administrator activate. Answers on the main thread.
class FilterdExtensionManager : public ExtensionManager {
public:
    void requestProperties(const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed) override;
    void activate(const QString& identifier, ActivationEvents events) override;
    [[nodiscard]] QString hostBundlePath() override;

private:
    bool m_wasThere = false; ///< the daemon has answered once
    QObject m_context;       ///< ends what is still to be answered
};

} // namespace orvanta
