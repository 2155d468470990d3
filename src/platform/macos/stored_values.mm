#include "platform/macos/stored_values.h"

#include "platform/macos/foundation_values.h"

namespace orvanta {

StoredValue toStoredValue(NSArray* array)
{
    auto texts = toTexts(array);
    return texts ? StoredValue(*std::move(texts)) : StoredValue(ForeignValue());
}

PlatformError foreignValueError()
{
    return { QStringLiteral("a value of a foreign type") };
}

} // namespace orvanta
