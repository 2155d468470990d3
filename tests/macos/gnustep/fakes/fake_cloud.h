#pragma once

#include "platform/key_value_store.h"

namespace orvanta::testing::mac {

// The ubiquitous key-value store, and another machine that writes to it.

/// `value` is on its way here: it arrives with the next synchronize, or with arriveFromCloud().
void changeInCloud(const QString& key, const StoredValue& value);
void arriveFromCloud();

/// A value of a type that is none of ours.
void leaveNumberInCloud(const QString& key);

// The user defaults of this machine.
void leaveNumberInDefaults(const QString& key);

} // namespace orvanta::testing::mac
