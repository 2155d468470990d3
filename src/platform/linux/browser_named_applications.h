#pragma once

#include "platform/running_applications.h"

#include <memory>

namespace orvanta {

/// Running applications in which a build of a known browser bears a name that tells it as that browser: Chromium, which is
/// reported under Chrome's identifier, is called Google Chrome. All else is as the wrapped one says.
class BrowserNamedApplications final : public RunningApplications {
public:
    explicit BrowserNamedApplications(std::unique_ptr<RunningApplications> applications) : m_applications(std::move(applications)) { }

    [[nodiscard]] std::optional<RunningApplication> frontmost() override;
    [[nodiscard]] std::vector<RunningApplication> all() override;
    void hide(const QString& bundleIdentifier) override { m_applications->hide(bundleIdentifier); }

private:
    std::unique_ptr<RunningApplications> m_applications;
};

} // namespace orvanta
