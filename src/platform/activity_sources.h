#pragma once

#include "platform/idle_source.h"
#include "platform/process_lister.h"
#include "platform/running_applications.h"
#include "platform/script_runner.h"

#include <functional>
#include <memory>

namespace orvanta {

/// What a sample of the user's activity is taken from. Made, used and destroyed on one thread.
struct ActivitySources {
    std::unique_ptr<RunningApplications> applications; ///< the script runner may ask it, so it is destroyed after that
    std::unique_ptr<ScriptRunner> scripts;
    std::unique_ptr<IdleSource> idle;
    std::unique_ptr<ProcessLister> processes;
};

/// Makes them, on whichever thread calls it.
using MakeActivitySources = std::function<ActivitySources()>;

} // namespace orvanta
