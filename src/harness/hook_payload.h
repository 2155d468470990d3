#pragma once

#include "harness/lifecycle/ai_harness.h"
#include "harness/lifecycle/harness_lifecycle_event.h"
#include "platform/file_system.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <expected>

namespace orvanta {

/// Why a hook's body is no event.
enum class HarnessLifecycleEventError : std::uint8_t { invalidPayload };

/// A moment in UTC, to the millisecond.
using ReceiptTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// `time` as events carry it: 2026-01-31T08:05:09.123Z.
[[nodiscard]] QString isoDateTime(ReceiptTime time);

/// The event that the hook of `harness` told of in `body`, received at `occurredAt`. Reads the session's opening messages
/// from the transcript that the body names; one that cannot be read only costs those. Any bytes may be given.
[[nodiscard]] std::expected<HarnessLifecycleEvent, HarnessLifecycleEventError> decodeHookPayload(
    const QByteArray& body, AIHarness harness, ReceiptTime occurredAt, FileSystem& files);

} // namespace orvanta
