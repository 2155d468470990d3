#pragma once

#include "platform/application_directory.h"

#include <map>

namespace orvanta::testing {

/// Applications that are where the test says, with the pictures that it gives them. Filled before other threads read it.
class FakeApplicationDirectory : public ApplicationDirectory {
public:
    [[nodiscard]] std::optional<QUrl> locate(const QString& bundleIdentifier) const override
    {
        const auto found = installed.find(bundleIdentifier);
        return found == installed.end() ? std::nullopt : std::optional(found->second);
    }

    [[nodiscard]] std::optional<QImage> icon(const QString& path, int pixelSize) const override
    {
        const auto found = icons.find(path);
        if (found == icons.end())
            return std::nullopt;
        const QImage& largest = found->second;
        if (largest.width() <= pixelSize && largest.height() <= pixelSize)
            return largest;
        return largest.scaled(pixelSize, pixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }

    std::map<QString, QUrl> installed; ///< by identifier
    std::map<QString, QImage> icons;   ///< by path
};

} // namespace orvanta::testing
