#include "harness/harness_hook_installer.h"

#include "harness/hook_configuration.h"
#include "harness/hook_script.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString copyPrefix(const QString& path)
{
    return QFileInfo(path).fileName() + u".before-orvanta-"_s;
}

std::unexpected<PlatformError> failure(const QString& path, const QString& what)
{
    return std::unexpected(PlatformError { path + u' ' + what });
}

std::string_view bytesOf(const QByteArray& content)
{
    return { content.constData(), static_cast<std::size_t>(content.size()) };
}

} // namespace

QString HarnessPaths::hookFolder() const
{
    return homeDirectory + "/Library/Application Support/Orvanta Focus/Hooks"_L1;
}

QString HarnessPaths::hookScript() const
{
    return hookFolder() + u'/' + QLatin1StringView(hookScriptName.data(), static_cast<qsizetype>(hookScriptName.size()));
}

QString HarnessPaths::agentFolder(AIHarness agent) const
{
    return homeDirectory + (agent == AIHarness::codex ? "/.codex"_L1 : "/.claude"_L1);
}

QString HarnessPaths::configuration(AIHarness agent) const
{
    return agentFolder(agent) + (agent == AIHarness::codex ? "/hooks.json"_L1 : "/settings.json"_L1);
}

QString HarnessHookInstaller::command(AIHarness agent) const
{
    return hookCommand(m_paths.hookScript(), agent);
}

HarnessHookStatus HarnessHookInstaller::status(AIHarness agent) const
{
    if (!m_fileManager->exists(m_paths.agentFolder(agent)))
        return HarnessHookStatus::unavailable;
    if (!m_fileManager->exists(m_paths.configuration(agent)))
        return HarnessHookStatus::notInstalled;
    const auto script = m_fileManager->read(m_paths.hookScript());
    if (!script || *script != hookScript())
        return HarnessHookStatus::needsRepair;
    const auto content = m_fileManager->read(m_paths.configuration(agent));
    if (!content || !*content)
        return HarnessHookStatus::needsRepair;
    const auto root = parseJsonObject(bytesOf(**content));
    return root && hasRegistrations(*root, command(agent)) ? HarnessHookStatus::installed : HarnessHookStatus::needsRepair;
}

Result<void> HarnessHookInstaller::install(AIHarness agent, const QDateTime& now) const
{
    if (const auto made = m_fileManager->createDirectories(m_paths.hookFolder()); !made)
        return failure(m_paths.hookFolder(), made.error().description);
    if (const auto written = m_fileManager->writeAtomically(m_paths.hookScript(), hookScript()); !written)
        return failure(m_paths.hookScript(), written.error().description);
    if (const auto set = m_fileManager->setPermissions(m_paths.hookScript(), hookScriptMode); !set)
        return failure(m_paths.hookScript(), set.error().description);

    for (int attempt = 0; attempt < configurationAttempts; ++attempt) {
        const auto outcome = registerHook(agent, now);
        if (!outcome)
            return std::unexpected(outcome.error());
        if (*outcome == FileSystem::Replacement::replaced)
            return {};
    }
    return failure(m_paths.configuration(agent), u"is being changed by another program; try again"_s);
}

Result<FileSystem::Replacement> HarnessHookInstaller::registerHook(AIHarness agent, const QDateTime& now) const
{
    const QString path = m_paths.configuration(agent);
    const auto content = m_fileManager->read(path);
    if (!content)
        return failure(path, content.error().description);
    auto root = *content ? parseJsonObject(bytesOf(**content)) : JsonNode::object();
    if (!root)
        return failure(path, root.error() + u"; it was left as it is"_s);
    const bool isFirstChange = *content && (!mentionsHookScript(*root) || keptCopies(*m_fileManager, path).isEmpty());
    if (const auto added = addRegistrations(*root, agent, command(agent)); !added)
        return failure(path, added.error() + u"; it was left as it is"_s);
    const QByteArray changed = QByteArray::fromStdString(prettyJson(*root, JsonOrder::sorted));
    if (*content && **content == changed)
        return FileSystem::Replacement::replaced;
    if (isFirstChange) {
        if (const auto kept = keepCopy(path, **content, now); !kept)
            return std::unexpected(kept.error());
    }
    const auto replaced = m_fileManager->replace(path, *content, changed);
    if (!replaced)
        return failure(path, replaced.error().description);
    return *replaced;
}

Result<void> HarnessHookInstaller::keepCopy(const QString& path, const QByteArray& content, const QDateTime& now) const
{
    const QString stem = QFileInfo(path).path() + u'/' + copyPrefix(path) + now.toUTC().toString(u"yyyyMMdd'T'hhmmss'Z'"_s);
    constexpr int copiesASecond = 100;
    for (int number = 1; number <= copiesASecond; ++number) {
        const QString copy = number == 1 ? stem : u"%1-%2"_s.arg(stem).arg(number);
        const auto written = m_fileManager->replace(copy, std::nullopt, content);
        if (!written)
            return failure(copy, written.error().description);
        if (*written == FileSystem::Replacement::replaced)
            return {};
        if (const auto known = m_fileManager->read(copy); known && *known == content)
            return {};
    }
    return failure(stem, u"cannot be made: there are too many copies of this second"_s);
}

QStringList keptCopies(FileSystem& files, const QString& path)
{
    return files.names(QFileInfo(path).path()).filter(QRegularExpression(u'^' + QRegularExpression::escape(copyPrefix(path))));
}

} // namespace orvanta
