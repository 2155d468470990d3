#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace orvanta::testing::mac {

// A system that records what the macOS layer asks of it, and answers when and how a test says so. It stands where the frameworks
// of a Mac stand, under their names; what it hands to completion handlers it hands over on a thread of its own, as they may.

/// Everything that was asked, in order. Cleared by begin().
[[nodiscard]] QStringList& calls();

/// A new test begins: nothing is known, nothing is pending, nothing was asked.
void begin();

/// Has `reset` called by every begin(). For the fakes.
void onBegin(void (*reset)());

/// Registers itself as it is made.
struct ResetAtBegin {
    explicit ResetAtBegin(void (*reset)()) { onBegin(reset); }
};

/// Runs `task` on another thread and waits for its end.
void onAnotherThread(const std::function<void()>& task);

void record(const QString& call);

} // namespace orvanta::testing::mac
