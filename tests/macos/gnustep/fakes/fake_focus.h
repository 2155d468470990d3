#pragma once

#include <QString>

#include <optional>

namespace orvanta::testing::mac {

// The system's Focus and who may know it, and the permission to show alerts. Both requests wait for the user.

void turnFocus(std::optional<bool> isOn);
/// By the system's raw value.
void setFocusAuthorisation(int status);

void answerNotificationRequest(bool granted);
void failNotificationRequest(const QString& description);
/// The status becomes `status` by the user's answer.
void answerFocusRequest(int status);
[[nodiscard]] int pendingFocusRequests();

} // namespace orvanta::testing::mac
