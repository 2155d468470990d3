#include "app/policy/policy_text.h"

namespace orvanta {

QString trimmedWhiteSpaceAndLineBreaks(QStringView text)
{
    // QChar::isSpace covers the Unicode separators, tab to carriage return, and U+0085. All of them lie in the
    // basic plane, so looking at single units never splits a surrogate pair.
    return text.trimmed().toString();
}

} // namespace orvanta
