#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string_view>

struct XML_ParserStruct;

namespace orvanta {

/// What a bundle's Info.plist says that matters here. An entry that is missing, or of another type than the one named, is
/// absent.
struct BundleInformation {
    std::optional<QString> bundleIdentifier; ///< CFBundleIdentifier
    std::optional<QString> displayName;      ///< CFBundleDisplayName
    std::optional<QString> name;             ///< CFBundleName
    std::optional<bool> uiElement;           ///< LSUIElement
    std::optional<bool> backgroundOnly;      ///< LSBackgroundOnly

    bool operator==(const BundleInformation&) const = default;
};

enum class BundleInformationError : std::uint8_t {
    tooLarge,
    noPropertyList, ///< neither a well-formed XML property list nor a binary one
    noDictionary,   ///< a property list of something else
};

/// Files beyond this size are refused. The largest ones in use, with a thousand document types, are below 1 MiB.
inline constexpr std::size_t bundleInformationLimit = std::size_t { 4 } << 20;

/// Reads one Info.plist after the other, and keeps what is dear to make between them. Used on one thread.
class BundleInformationReader {
public:
    BundleInformationReader();
    ~BundleInformationReader();
    BundleInformationReader(const BundleInformationReader&) = delete;
    BundleInformationReader& operator=(const BundleInformationReader&) = delete;

    /// As parseBundleInformation() does.
    [[nodiscard]] std::expected<BundleInformation, BundleInformationError> parse(std::string_view bytes);

private:
    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> m_parser;
    unsigned long m_salt; ///< of the parser's tables; whoever writes a file must not know it
};

/// Reads the bytes of an Info.plist, in XML or in the binary form. Takes any bytes; what of a binary one is not asked for is
/// not looked at, however it may be damaged. Of an entry that stands twice the last one counts.
[[nodiscard]] std::expected<BundleInformation, BundleInformationError> parseBundleInformation(std::string_view bytes);

} // namespace orvanta
