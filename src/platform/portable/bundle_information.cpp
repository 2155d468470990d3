#include "platform/portable/bundle_information.h"

#include "platform/portable/bundle_information_entries.h"

namespace orvanta {

std::expected<BundleInformation, BundleInformationError> parseBundleInformation(std::string_view bytes)
{
    if (bytes.size() > bundleInformationLimit)
        return std::unexpected(BundleInformationError::tooLarge);
    return bytes.starts_with("bplist0") ? parseBinaryBundleInformation(bytes) : parseXmlBundleInformation(bytes);
}

} // namespace orvanta
