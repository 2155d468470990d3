#pragma once

#include "platform/application_folders.h"

namespace orvanta {

/// Applications as bundles, read by the system.
class BundleApplicationFolders : public ApplicationFolders {
public:
    [[nodiscard]] std::vector<QUrl> defaults() const override;
    [[nodiscard]] std::vector<ApplicationRecord> records(const QUrl& folder) const override;
    [[nodiscard]] std::optional<ApplicationRecord> record(const QUrl& applicationURL) const override;
    [[nodiscard]] std::optional<QString> ownBundleIdentifier() const override;
};

} // namespace orvanta
