#pragma once

#include <QString>

namespace orvanta::testing::mac {

// The Darwin notify centre: some process posts, and who registered is called on another thread.

void postDarwinNotification(const QString& name);
[[nodiscard]] int darwinRegistrations();

} // namespace orvanta::testing::mac
