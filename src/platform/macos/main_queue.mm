#include "platform/macos/main_queue.h"

#import <dispatch/dispatch.h>

namespace orvanta {

void onMainQueue(Callback<> task)
{
    // A block copies what it captures.
    const auto shared = std::make_shared<Callback<>>(std::move(task));
    dispatch_async(dispatch_get_main_queue(), ^{ (*shared)(); });
}

} // namespace orvanta
