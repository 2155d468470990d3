#pragma once

#include "platform/application_directory.h"

namespace orvanta {

/// Where Launch Services know a bundle, and the icon that the Finder shows of it.
class WorkspaceApplicationDirectory : public ApplicationDirectory {
public:
    [[nodiscard]] std::optional<QUrl> locate(const QString& bundleIdentifier) const override;
    [[nodiscard]] std::optional<QImage> icon(const QString& path, int pixelSize) const override;
};

} // namespace orvanta
