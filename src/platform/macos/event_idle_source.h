#pragma once

#include "platform/idle_source.h"

namespace orvanta {

/// Asks the event system for the five kinds of event that a user at the machine makes.
class EventIdleSource : public IdleSource {
public:
    [[nodiscard]] std::vector<double> secondsSinceLastEvents() override;
};

} // namespace orvanta
