#include "platform/portable/bundle_information_entries.h"

#include <string>

#include <expat.h>

namespace orvanta {

namespace {

/// Follows the elements of an XML property list, and keeps what stands in the outermost dictionary.
class XmlReading {
public:
    explicit XmlReading(XML_Parser parser) : m_parser(parser) { }

    void start(std::string_view element)
    {
        ++m_depth;
        if (m_depth == 1 && element == "plist") {
            m_dictionaryDepth = 2;
            return;
        }
        if (m_depth == m_dictionaryDepth) {
            // One object makes a property list, and nothing more.
            if (m_hasObject)
                fail();
            m_hasObject = true;
            m_isDictionary = element == "dict";
            return;
        }
        if (!m_isDictionary)
            return;
        if (m_depth == m_dictionaryDepth + 1)
            startEntry(element);
        else if (m_depth == m_dictionaryDepth + 2 && (m_role == Role::key || m_role == Role::text))
            fail(); // texts hold no elements
    }

    void end()
    {
        if (m_isDictionary && m_depth == m_dictionaryDepth + 1)
            endEntry();
        else if (m_isDictionary && m_depth == m_dictionaryDepth && m_hasKey)
            fail(); // a key without a value
        --m_depth;
    }

    void characters(std::string_view text)
    {
        if (m_depth == m_dictionaryDepth + 1 && (m_role == Role::key || (m_role == Role::text && m_text)))
            m_characters += text;
    }

    /// Nothing that property lists need; what it is good for is making small files large.
    void fail()
    {
        m_isBroken = true;
        XML_StopParser(m_parser, XML_FALSE);
    }

    [[nodiscard]] std::expected<BundleInformation, BundleInformationError> finish(bool isWellFormed)
    {
        if (!isWellFormed || m_isBroken || !m_hasObject)
            return std::unexpected(BundleInformationError::noPropertyList);
        if (!m_isDictionary)
            return std::unexpected(BundleInformationError::noDictionary);
        return std::move(m_information);
    }

private:
    enum class Role : std::uint8_t { none, key, text, flag, other };

    void startEntry(std::string_view element)
    {
        m_characters.clear();
        const bool isKey = element == "key";
        if (isKey == m_hasKey) {
            fail(); // keys and values take turns
            return;
        }
        if (isKey) {
            m_role = Role::key;
            return;
        }
        // Whatever stood under this key before no longer counts.
        if (m_text)
            m_text->reset();
        if (m_flag)
            m_flag->reset();
        m_role = element == "string" ? Role::text : element == "true" || element == "false" ? Role::flag : Role::other;
        if (m_role == Role::flag && m_flag)
            *m_flag = element == "true";
    }

    void endEntry()
    {
        if (m_role == Role::key) {
            m_hasKey = true;
            m_text = textEntry(m_information, m_characters);
            m_flag = flagEntry(m_information, m_characters);
        } else {
            if (m_role == Role::text && m_text)
                *m_text = QString::fromUtf8(m_characters.data(), static_cast<qsizetype>(m_characters.size()));
            m_hasKey = false;
        }
        m_role = Role::none;
    }

    XML_Parser m_parser;
    int m_depth = 0;
    int m_dictionaryDepth = 1; ///< one deeper inside a <plist>
    bool m_hasObject = false;
    bool m_isDictionary = false;
    bool m_isBroken = false;
    bool m_hasKey = false; ///< a value comes next
    Role m_role = Role::none;
    std::string m_characters;
    BundleInformation m_information;
    std::optional<QString>* m_text = nullptr; ///< where the value goes, if it is a text that is asked for
    std::optional<bool>* m_flag = nullptr;    ///< the same for a truth value
};

XmlReading& reading(void* data)
{
    return *static_cast<XmlReading*>(data);
}

} // namespace

std::expected<BundleInformation, BundleInformationError> parseXmlBundleInformation(std::string_view bytes, XML_ParserStruct* parser)
{
    XmlReading state(parser);
    XML_SetUserData(parser, &state);
    XML_SetElementHandler(
        parser, [](void* data, const XML_Char* name, const XML_Char**) { reading(data).start(name); },
        [](void* data, const XML_Char*) { reading(data).end(); });
    XML_SetCharacterDataHandler(parser,
        [](void* data, const XML_Char* text, int length) { reading(data).characters(std::string_view(text, static_cast<std::size_t>(length))); });
    XML_SetEntityDeclHandler(
        parser, [](void* data, const XML_Char*, int, const XML_Char*, int, const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
            reading(data).fail();
        });
    const auto status = XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
    return state.finish(status == XML_STATUS_OK);
}

} // namespace orvanta
