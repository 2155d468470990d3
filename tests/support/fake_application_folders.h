#pragma once

#include "platform/application_folders.h"

#include <algorithm>
#include <map>

namespace orvanta::testing {

/// Folders full of applications, as the test says. Filled before other threads read it.
class FakeApplicationFolders : public ApplicationFolders {
public:
    [[nodiscard]] std::vector<QUrl> defaults() const override { return defaultFolders; }

    [[nodiscard]] std::vector<ApplicationRecord> records(const QUrl& folder) const override
    {
        const auto found = content.find(folder);
        return found == content.end() ? std::vector<ApplicationRecord>() : found->second;
    }

    [[nodiscard]] std::optional<ApplicationRecord> record(const QUrl& applicationURL) const override
    {
        for (const auto& [folder, applications] : content) {
            const auto found = std::ranges::find(applications, applicationURL, &ApplicationRecord::applicationURL);
            if (found != applications.end())
                return *found;
        }
        return std::nullopt;
    }

    [[nodiscard]] std::optional<QString> ownBundleIdentifier() const override { return own; }

    std::vector<QUrl> defaultFolders;
    std::map<QUrl, std::vector<ApplicationRecord>> content;
    std::optional<QString> own;
};

} // namespace orvanta::testing
