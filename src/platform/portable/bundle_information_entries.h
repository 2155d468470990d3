#pragma once

#include "platform/portable/bundle_information.h"

#include <string_view>

namespace orvanta {

/// The texts and truth values of a BundleInformation, by the names under which they stand in a property list.
inline std::optional<QString>* textEntry(BundleInformation& information, std::string_view key)
{
    if (key == "CFBundleIdentifier")
        return &information.bundleIdentifier;
    if (key == "CFBundleDisplayName")
        return &information.displayName;
    if (key == "CFBundleName")
        return &information.name;
    return nullptr;
}

inline std::optional<bool>* flagEntry(BundleInformation& information, std::string_view key)
{
    if (key == "LSUIElement")
        return &information.uiElement;
    if (key == "LSBackgroundOnly")
        return &information.backgroundOnly;
    return nullptr;
}

/// Each form's own reader; both take any bytes. The one for XML uses a fresh parser, or one that was reset.
[[nodiscard]] std::expected<BundleInformation, BundleInformationError> parseBinaryBundleInformation(std::string_view bytes);
[[nodiscard]] std::expected<BundleInformation, BundleInformationError> parseXmlBundleInformation(std::string_view bytes, XML_ParserStruct* parser);

} // namespace orvanta
