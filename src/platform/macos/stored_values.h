#pragma once

#include "platform/key_value_store.h"

#import <Foundation/Foundation.h>

namespace orvanta {

// What Foundation's stores hold, as ours.

[[nodiscard]] StoredValue toStoredValue(NSArray* array); ///< foreign if an element is no text

/// What is to be said to whoever writes a ForeignValue.
[[nodiscard]] PlatformError foreignValueError();

} // namespace orvanta
