#pragma once

#include "harness/harness_hook_installer.h"

namespace orvanta {

/// Takes our entries out of an agent's configuration again, and nothing else. The script stays: an agent that is running
/// goes on calling it until it is started anew. A value; made by whoever needs it.
class HarnessHookRemover {
public:
    HarnessHookRemover(QString homeDirectory, FileSystem& fileManager)
        : m_installer(std::move(homeDirectory), fileManager)
        , m_fileManager(&fileManager)
    {
    }

    enum class Outcome : std::uint8_t { nothingToRemove, removed, restored };

    /// Where nothing but our entries has changed since they were installed, the file becomes byte for byte what it was
    /// before, or goes where there was none (`restored`). An error, worded for the user, leaves the configuration untouched.
    [[nodiscard]] Result<Outcome> uninstall(AIHarness agent) const;

private:
    [[nodiscard]] std::optional<QByteArray> contentBefore(AIHarness agent, const QByteArray& content) const;

    HarnessHookInstaller m_installer;
    FileSystem* m_fileManager;
};

} // namespace orvanta
