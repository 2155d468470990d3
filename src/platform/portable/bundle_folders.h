#pragma once

#include "platform/application_folders.h"

namespace orvanta {

/// Applications that are installed as bundles: folders called "….app" with an Info.plist in them, XML or binary. Reads them
/// without any help of a system that knows bundles. Names are enumerated in the order of their bytes.
class BundleFolders : public ApplicationFolders {
public:
    /// The default folders are `defaults`; this program itself is the bundle with the identifier `own`.
    explicit BundleFolders(std::vector<QUrl> defaults = {}, std::optional<QString> own = {});

    [[nodiscard]] std::vector<QUrl> defaults() const override { return m_defaults; }
    [[nodiscard]] std::vector<ApplicationRecord> records(const QUrl& folder) const override;
    [[nodiscard]] std::optional<ApplicationRecord> record(const QUrl& applicationURL) const override;
    [[nodiscard]] std::optional<QString> ownBundleIdentifier() const override { return m_own; }

private:
    std::vector<QUrl> m_defaults;
    std::optional<QString> m_own;
};

} // namespace orvanta
