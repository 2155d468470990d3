#pragma once

#include "platform/process_lister.h"

namespace orvanta {

/// Runs "/bin/ps -axo pcpu=,command=", and leaves nothing out.
class TaskProcessLister : public ProcessLister {
public:
    [[nodiscard]] std::optional<QByteArray> list(double leastCpuPercent = 0) override;
};

} // namespace orvanta
