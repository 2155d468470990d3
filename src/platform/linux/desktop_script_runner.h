#pragma once

#include "platform/linux/accessible_documents.h"
#include "platform/running_applications.h"
#include "platform/script_runner.h"

namespace orvanta {

/// Answers the scripts by what the desktop knows: the front process by the window manager, a tab by the accessibility bus.
/// Safari and Arc are not built for Linux, and never answer.
class DesktopScriptRunner final : public ScriptRunner {
public:
    /// `applications` outlives this.
    explicit DesktopScriptRunner(RunningApplications& applications, std::chrono::milliseconds patience = AccessibleDocuments::defaultPatience)
        : m_applications(applications)
        , m_documents(patience)
    {
    }

    [[nodiscard]] std::optional<QString> run(const Script& script) override;

private:
    [[nodiscard]] std::optional<QString> tab(const QString& applicationName);

    RunningApplications& m_applications;
    AccessibleDocuments m_documents;
};

} // namespace orvanta
