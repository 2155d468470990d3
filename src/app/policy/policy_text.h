#pragma once

#include <QString>
#include <QStringView>

namespace orvanta {

/// `text` without the Unicode white space and line breaks at both ends.
[[nodiscard]] QString trimmedWhiteSpaceAndLineBreaks(QStringView text);

} // namespace orvanta
