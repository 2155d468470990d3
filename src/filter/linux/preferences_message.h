#pragma once

#include "filter/linux/preferences.h"

#include <systemd/sd-bus.h>

namespace orvanta::filter {

/// The record as it travels: a{sv}, with the provider's and the vendor's dictionaries inside. A record with an unknown key,
/// a value of another type, or too much of anything is an error (below zero).
[[nodiscard]] int readPreferences(sd_bus_message* message, Preferences& preferences);
[[nodiscard]] int appendPreferences(sd_bus_message* message, const Preferences& preferences);

} // namespace orvanta::filter
