#include "activity/agent_activity_detector.h"

#include "activity/text_pieces.h"

#include <QStringDecoder>

#include <algorithm>

namespace orvanta::AgentActivityDetector {

using namespace Qt::StringLiterals;

namespace {

bool isNewline(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= 0x0A && code <= 0x0D) || code == 0x85 || code == 0x2028 || code == 0x2029;
}

bool isWhiteSpace(QChar c)
{
    return c.isSpace();
}

/// What is executed, without its folder.
QStringView executableName(QStringView command)
{
    qsizetype begin = 0;
    while (begin < command.size() && isWhiteSpace(command[begin]))
        ++begin;
    qsizetype end = begin;
    while (end < command.size() && !isWhiteSpace(command[end]))
        ++end;
    QStringView path = command.sliced(begin, end - begin);
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

bool isDirectAgent(const QString& command)
{
    if (command.contains(".app/"_L1))
        return false;
    const QStringView name = executableName(command);
    return name == "claude"_L1 || name == "codex"_L1;
}

bool isDesktopAgent(const QString& command)
{
    return command.contains("/claude/claude-code/"_L1) && command.contains("/claude.app/contents/macos/claude"_L1);
}

bool isActiveAgent(const ProcessSnapshot& process)
{
    if (process.cpuPercent < leastCpuPercent)
        return false;
    const QString command = process.command.toLower();
    return isDirectAgent(command) || command.contains("@anthropic-ai/claude-code"_L1) || command.contains("@openai/codex"_L1)
        || isDesktopAgent(command) || command.contains("kernel.js --session-id"_L1) || command.contains("codex app-server"_L1);
}

/// The process that a line tells of.
std::optional<ProcessSnapshot> processSnapshot(QStringView line)
{
    const auto pieces = twoPieces(line, isWhiteSpace);
    if (!pieces)
        return std::nullopt;
    bool isNumber = false;
    const double share = (*pieces)[0].toDouble(&isNumber);
    return isNumber ? std::optional(ProcessSnapshot { (*pieces)[1].toString(), share }) : std::nullopt;
}

} // namespace

bool isAgentWorking(ProcessLister& processes)
{
    const auto listing = processes.list(leastCpuPercent);
    if (!listing)
        return false;
    const auto snapshots = processSnapshots(*listing);
    return snapshots && hasActiveAgent(*snapshots);
}

bool hasActiveAgent(const std::vector<ProcessSnapshot>& processes)
{
    return std::ranges::any_of(processes, isActiveAgent);
}

std::optional<std::vector<ProcessSnapshot>> processSnapshots(const QByteArray& listing)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(listing);
    if (decoder.hasError())
        return std::nullopt;
    std::vector<ProcessSnapshot> snapshots;
    for (qsizetype begin = 0; begin < text.size();) {
        const auto end = std::find_if(text.begin() + begin, text.end(), isNewline) - text.begin();
        if (auto snapshot = processSnapshot(QStringView(text).sliced(begin, end - begin)))
            snapshots.push_back(*std::move(snapshot));
        begin = end + 1;
    }
    return snapshots;
}

} // namespace orvanta::AgentActivityDetector
