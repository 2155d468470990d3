#pragma once

#include "platform/running_applications.h"

namespace orvanta {

/// The shared workspace's applications. What it says moves on only while the main thread's event loop runs.
class WorkspaceRunningApplications : public RunningApplications {
public:
    [[nodiscard]] std::optional<RunningApplication> frontmost() override;
    [[nodiscard]] std::vector<RunningApplication> all() override;
    void hide(const QString& bundleIdentifier) override;
};

} // namespace orvanta
