#include "harness/harness_hook_remover.h"

#include "harness/hook_configuration.h"

#include <QFileInfo>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

std::unexpected<PlatformError> failure(const QString& path, const QString& what)
{
    return std::unexpected(PlatformError { path + u' ' + what });
}

std::string_view bytesOf(const QByteArray& content)
{
    return { content.constData(), static_cast<std::size_t>(content.size()) };
}

} // namespace

Result<HarnessHookRemover::Outcome> HarnessHookRemover::uninstall(AIHarness agent) const
{
    const QString path = m_installer.paths().configuration(agent);
    for (int attempt = 0; attempt < configurationAttempts; ++attempt) {
        const auto content = m_fileManager->read(path);
        if (!content)
            return failure(path, content.error().description);
        if (!*content)
            return Outcome::nothingToRemove;
        auto root = parseJsonObject(bytesOf(**content));
        if (!root)
            return failure(path, root.error() + u"; it was left as it is"_s);
        if (!mentionsHookScript(*root))
            return Outcome::nothingToRemove;

        const auto before = contentBefore(agent, **content);
        removeRegistrations(*root);
        // A configuration that was there before has a copy.
        const bool isOurFile = root->members.empty() && keptCopies(*m_fileManager, path).isEmpty();
        const QByteArray changed = before ? *before : QByteArray::fromStdString(prettyJson(*root, JsonOrder::asItStands));
        const auto replaced = isOurFile ? m_fileManager->remove(path, **content) : m_fileManager->replace(path, *content, changed);
        if (!replaced)
            return failure(path, replaced.error().description);
        if (*replaced == FileSystem::Replacement::replaced)
            return before || isOurFile ? Outcome::restored : Outcome::removed;
    }
    return failure(path, u"is being changed by another program; try again"_s);
}

/// The latest kept copy, if installing into it gives what stands there now.
std::optional<QByteArray> HarnessHookRemover::contentBefore(AIHarness agent, const QByteArray& content) const
{
    const QString path = m_installer.paths().configuration(agent);
    const QStringList copies = keptCopies(*m_fileManager, path);
    if (copies.isEmpty())
        return std::nullopt;
    const auto copy = m_fileManager->read(QFileInfo(path).path() + u'/' + copies.last());
    if (!copy || !*copy)
        return std::nullopt;
    auto root = parseJsonObject(bytesOf(**copy));
    if (!root || mentionsHookScript(*root) || !addRegistrations(*root, agent, m_installer.command(agent)))
        return std::nullopt;
    if (bytesOf(content) != prettyJson(*root, JsonOrder::sorted))
        return std::nullopt;
    return **copy;
}

} // namespace orvanta
