#pragma once

#include "harness/lifecycle/ai_harness.h"
#include "platform/file_system.h"

#include <QDateTime>
#include <QString>

#include <cstdint>

namespace orvanta {

enum class HarnessHookStatus : std::uint8_t {
    unavailable, ///< the agent is not set up for this user
    notInstalled,
    needsRepair,
    installed,
};

/// Where things stand in a user's home folder.
struct HarnessPaths {
    QString homeDirectory;

    [[nodiscard]] QString hookFolder() const;
    [[nodiscard]] QString hookScript() const;
    [[nodiscard]] QString agentFolder(AIHarness agent) const;
    [[nodiscard]] QString configuration(AIHarness agent) const;
};

/// Writes the hook script and registers it in an agent's own configuration, and tells whether that is so and intact. It
/// never removes anything: see HarnessHookRemover. A value; made by whoever needs it.
class HarnessHookInstaller {
public:
    /// `homeDirectory` is the absolute path of the user's home folder.
    HarnessHookInstaller(QString homeDirectory, FileSystem& fileManager) : m_paths { std::move(homeDirectory) }, m_fileManager(&fileManager) { }

    [[nodiscard]] const HarnessPaths& paths() const { return m_paths; }
    [[nodiscard]] QString command(AIHarness agent) const;

    /// Never fails: what cannot be read or understood needs repair.
    [[nodiscard]] HarnessHookStatus status(AIHarness agent) const;

    /// Installs or repairs the hook of `agent`. Everything in its configuration that is not ours stays as it was. Before
    /// our entries come into a configuration, it is kept beside it under a name with the date `now`. On an error, which is
    /// worded for the user, the configuration is untouched.
    [[nodiscard]] Result<void> install(AIHarness agent, const QDateTime& now = QDateTime::currentDateTimeUtc()) const;

private:
    [[nodiscard]] Result<FileSystem::Replacement> registerHook(AIHarness agent, const QDateTime& now) const;
    [[nodiscard]] Result<void> keepCopy(const QString& path, const QByteArray& content, const QDateTime& now) const;

    HarnessPaths m_paths;
    FileSystem* m_fileManager;
};

/// The names, oldest first, of the copies that were kept beside the configuration at `path`.
[[nodiscard]] QStringList keptCopies(FileSystem& files, const QString& path);

/// How often a change is tried anew when somebody else changes the file at the same moment.
inline constexpr int configurationAttempts = 5;

} // namespace orvanta
