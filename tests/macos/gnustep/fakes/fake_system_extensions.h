#pragma once

#include "platform/extension_manager.h"

namespace orvanta::testing::mac {

// The system-extension manager. Each request is recorded with its kind, identifier and queue; it is answered when a test says so,
// of each kind the oldest first.

void findExtensions(const std::vector<ExtensionProperties>& properties);
void failExtensionProperties(const QString& description);

/// The raw value that the oldest activation's delegate answers.
[[nodiscard]] int askToReplaceExtension();
void askForExtensionApproval();
/// By the system's raw value.
void finishExtensionActivation(int result);
void failExtensionActivation(const QString& description);

/// Whom the oldest pending request of a kind is about; empty if none is pending.
[[nodiscard]] QString oldestExtensionLookup();
[[nodiscard]] QString oldestExtensionActivation();

} // namespace orvanta::testing::mac
