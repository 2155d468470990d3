#include "platform/portable/bundle_information.h"

#include "platform/portable/bundle_information_entries.h"

#include <QRandomGenerator>

#include <expat.h>

namespace orvanta {

BundleInformationReader::BundleInformationReader()
    : m_parser(XML_ParserCreate(nullptr), XML_ParserFree)
    , m_salt(static_cast<unsigned long>(QRandomGenerator::system()->generate64()) | 1U) // 0 would have it drawn anew for each file
{
}

BundleInformationReader::~BundleInformationReader() = default;

std::expected<BundleInformation, BundleInformationError> BundleInformationReader::parse(std::string_view bytes)
{
    if (bytes.size() > bundleInformationLimit)
        return std::unexpected(BundleInformationError::tooLarge);
    if (bytes.starts_with("bplist0"))
        return parseBinaryBundleInformation(bytes);
    if (!m_parser || XML_ParserReset(m_parser.get(), nullptr) != XML_TRUE)
        return std::unexpected(BundleInformationError::noPropertyList);
    XML_SetHashSalt(m_parser.get(), m_salt);
    return parseXmlBundleInformation(bytes, m_parser.get());
}

std::expected<BundleInformation, BundleInformationError> parseBundleInformation(std::string_view bytes)
{
    return BundleInformationReader().parse(bytes);
}

} // namespace orvanta
