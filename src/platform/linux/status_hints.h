#pragma once

#include <QString>

namespace orvanta {

/// What a Linux user needs to know beside a status text that names macOS: a sentence for `status`, or nothing for a text
/// that explains itself. Any thread.
[[nodiscard]] QString desktopStatusHint(const QString& status);

} // namespace orvanta
