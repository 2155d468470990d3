#pragma once

#include "platform/running_applications.h"

#include <QHash>

#include <cstdint>
#include <sys/types.h>
#include <vector>

namespace orvanta {

/// Makes applications of windows: all windows of one identifier are one application; without an identifier, all windows of one
/// process. An application shows itself as one if any of its windows does. In the order of their first windows.
class ApplicationGroups {
public:
    /// `owner` is what the window by itself is known as.
    void add(RunningApplication owner, pid_t process, std::uint64_t window);

    [[nodiscard]] std::vector<RunningApplication> take() { return std::move(m_applications); }

private:
    std::vector<RunningApplication> m_applications;
    QHash<QString, std::size_t> m_places;
};

} // namespace orvanta
