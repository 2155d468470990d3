#pragma once

#include "localservice/http_exchange.h"

#include <QString>

namespace orvanta::localservice {

/// A file of the program's own, by its name.
[[nodiscard]] QByteArray pageAsset(const QString& name);

/// Text as markup.
[[nodiscard]] QString escaped(const QString& text);

/// A whole page. `main` is markup; `title` is plain text. The policy allows the page its own style, by its digest,
/// and forms that lead back here; nothing else, and no frame around it.
[[nodiscard]] Response framedPage(int status, const QString& title, const QByteArray& style, const QString& main);

} // namespace orvanta::localservice
