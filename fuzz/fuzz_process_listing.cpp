// What a process lister prints, and the process file that ours reads: any bytes give processes or none, each process has a
// command that stood in the listing, and what is printed for it is one line of UTF-8.

#include "activity/agent_activity_detector.h"
#include "platform/linux/proc_process_lister.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orvanta;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    if (const auto processes = AgentActivityDetector::processSnapshots(bytes)) {
        const QString text = QString::fromUtf8(bytes);
        for (const ProcessSnapshot& process : *processes)
            require(!process.command.isEmpty() && text.contains(process.command));
        const bool isWorking = AgentActivityDetector::hasActiveAgent(*processes);
        for (const ProcessSnapshot& process : *processes)
            require(isWorking || !AgentActivityDetector::hasActiveAgent({ process }));
    }

    const auto stat = processStat(bytes);
    require(!stat || stat->name.size() < bytes.size());
    const QByteArray shown = printable(bytes);
    require(!shown.contains('\n') && !shown.contains('\0') && shown.size() <= bytes.size());
    require(AgentActivityDetector::processSnapshots(shown).has_value());
    return 0;
}
