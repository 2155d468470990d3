#include "harness/json_reader.h"

#include <algorithm>
#include <bitset>
#include <cstring>

namespace orvanta {

namespace {

constexpr bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

constexpr int hexValue(char character)
{
    if (isDigit(character))
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// How many bytes from `place` on are plain: neither a quotation mark, nor a backslash, nor a control character, nor
/// beyond ASCII. Eight at a time; the texts of a transcript are long.
std::size_t plainLength(std::string_view text, std::size_t place)
{
    constexpr std::uint64_t ones = 0x0101010101010101ULL;
    constexpr std::uint64_t tops = 0x8080808080808080ULL;
    const auto hasZero = [](std::uint64_t bytes) { return (bytes - ones) & ~bytes & tops; };
    const std::size_t begin = place;
    for (; place + sizeof(std::uint64_t) <= text.size(); place += sizeof(std::uint64_t)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + place, sizeof bytes);
        const std::uint64_t special
            = (bytes & tops) | hasZero(bytes ^ (ones * '"')) | hasZero(bytes ^ (ones * '\\')) | ((bytes - ones * 0x20) & ~bytes & tops);
        if (special)
            break;
    }
    while (place < text.size()) {
        const auto byte = static_cast<unsigned char>(text[place]);
        if (byte < 0x20 || byte >= 0x80 || byte == '"' || byte == '\\')
            break;
        ++place;
    }
    return place - begin;
}

/// The length of the well-formed multi-byte character at the beginning of `text`; 0 if there is none.
std::size_t multiByteLength(std::string_view text)
{
    const auto byte = [text](std::size_t index) { return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U; };
    const auto follows = [&byte](std::size_t index, unsigned low = 0x80, unsigned high = 0xBF) { return byte(index) >= low && byte(index) <= high; };
    const unsigned first = byte(0);
    if (first >= 0xC2 && first <= 0xDF)
        return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF)
        return follows(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF) && follows(2) ? 3 : 0;
    if (first >= 0xF0 && first <= 0xF4)
        return follows(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF) && follows(2) && follows(3) ? 4 : 0;
    return 0;
}

void appendUtf8(std::string& text, std::uint32_t codePoint)
{
    const auto tail = [codePoint](int shift) { return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        text.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        text.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        text.push_back(tail(0));
    } else if (codePoint < 0x10000) {
        text.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        text.push_back(tail(6));
        text.push_back(tail(0));
    } else {
        text.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        text.push_back(tail(12));
        text.push_back(tail(6));
        text.push_back(tail(0));
    }
}

/// The unit that "\uXXXX" at the beginning of `text` names; absent if none stands there.
std::optional<std::uint32_t> escapedUnit(std::string_view text)
{
    if (text.size() < 6 || text[0] != '\\' || text[1] != 'u')
        return std::nullopt;
    std::uint32_t unit = 0;
    for (const char digit : text.substr(2, 4)) {
        const int value = hexValue(digit);
        if (value < 0)
            return std::nullopt;
        unit = unit * 16 + static_cast<std::uint32_t>(value);
    }
    return unit;
}

constexpr bool isHighSurrogate(std::uint32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(std::uint32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

void JsonReader::skipSpace()
{
    while (m_place < m_text.size()) {
        const char character = m_text[m_place];
        if (character != ' ' && character != '\n' && character != '\r' && character != '\t')
            return;
        ++m_place;
    }
}

JsonKind JsonReader::kind()
{
    skipSpace();
    if (m_failed || m_place >= m_text.size())
        return JsonKind::none;
    switch (m_text[m_place]) {
    case '{':
        return JsonKind::object;
    case '[':
        return JsonKind::array;
    case '"':
        return JsonKind::text;
    case 't':
    case 'f':
        return JsonKind::boolean;
    case 'n':
        return JsonKind::null;
    default:
        return isAt('-') || isDigit(m_text[m_place]) ? JsonKind::number : JsonKind::none;
    }
}

bool JsonReader::open(char bracket)
{
    skipSpace();
    if (m_failed || !isAt(bracket))
        return fail();
    if (m_depth == deepestNesting) {
        m_isTooDeep = true;
        return fail();
    }
    ++m_depth;
    ++m_place;
    return true;
}

bool JsonReader::closes(char bracket)
{
    skipSpace();
    if (m_failed || !isAt(bracket))
        return false;
    --m_depth;
    ++m_place;
    return true;
}

bool JsonReader::separates()
{
    skipSpace();
    if (m_failed || !isAt(','))
        return false;
    ++m_place;
    return true;
}

std::optional<std::string_view> JsonReader::takeKey()
{
    skipSpace();
    const std::size_t begin = m_place;
    if (m_failed || !isAt('"') || !skipText())
        return std::nullopt;
    const std::string_view key = m_text.substr(begin, m_place - begin);
    skipSpace();
    if (!isAt(':'))
        return std::nullopt;
    ++m_place;
    return key;
}

std::optional<std::string_view> JsonReader::take()
{
    skipSpace();
    const std::size_t begin = m_place;
    const int depth = m_depth;
    // Which of the open brackets are braces; a loop, so that no input can exhaust the stack.
    std::bitset<deepestNesting + 1> isObject;
    bool needsValue = true;
    while (!m_failed) {
        if (needsValue) {
            const JsonKind next = kind();
            if (next != JsonKind::object && next != JsonKind::array) {
                if (!skipScalar())
                    break;
                needsValue = false;
            } else {
                if (!open(next == JsonKind::object ? '{' : '['))
                    break;
                isObject.set(static_cast<std::size_t>(m_depth), next == JsonKind::object);
                if (closes(next == JsonKind::object ? '}' : ']'))
                    needsValue = false;
                else if (next == JsonKind::object && !takeKey())
                    break;
            }
        } else if (m_depth == depth) {
            return m_text.substr(begin, m_place - begin);
        } else {
            const bool inObject = isObject.test(static_cast<std::size_t>(m_depth));
            if (separates()) {
                needsValue = true;
                if (inObject && !takeKey())
                    break;
            } else if (!closes(inObject ? '}' : ']')) {
                break;
            }
        }
    }
    fail();
    return std::nullopt;
}

bool JsonReader::isAtEnd()
{
    skipSpace();
    return !m_failed && m_place == m_text.size();
}

bool JsonReader::skipScalar()
{
    switch (kind()) {
    case JsonKind::text:
        return skipText();
    case JsonKind::number:
        return skipNumber();
    case JsonKind::null:
        return skipWord("null");
    case JsonKind::boolean:
        return skipWord("true") || skipWord("false");
    default:
        return false;
    }
}

bool JsonReader::skipWord(std::string_view word)
{
    if (m_text.substr(m_place, word.size()) != word)
        return false;
    m_place += word.size();
    return true;
}

bool JsonReader::skipDigits()
{
    const std::size_t begin = m_place;
    while (m_place < m_text.size() && isDigit(m_text[m_place]))
        ++m_place;
    return m_place > begin;
}

bool JsonReader::skipNumber()
{
    if (isAt('-'))
        ++m_place;
    if (isAt('0'))
        ++m_place;
    else if (!skipDigits())
        return false;
    if (isAt('.')) {
        ++m_place;
        if (!skipDigits())
            return false;
    }
    if (isAt('e') || isAt('E')) {
        ++m_place;
        if (isAt('+') || isAt('-'))
            ++m_place;
        if (!skipDigits())
            return false;
    }
    return true;
}

bool JsonReader::skipText()
{
    ++m_place; // the quotation mark
    while (true) {
        m_place += plainLength(m_text, m_place);
        if (m_place >= m_text.size())
            return false;
        const char character = m_text[m_place];
        if (character == '"') {
            ++m_place;
            return true;
        }
        if (!(character == '\\' ? skipEscape() : skipMultiByteCharacter()))
            return false;
    }
}

bool JsonReader::skipEscape()
{
    const std::string_view rest = m_text.substr(m_place);
    if (rest.size() < 2)
        return false;
    if (std::string_view("\"\\/bfnrt").find(rest[1]) != std::string_view::npos) {
        m_place += 2;
        return true;
    }
    if (!escapedUnit(rest))
        return false;
    m_place += 6;
    return true;
}

bool JsonReader::skipMultiByteCharacter()
{
    const std::size_t length = multiByteLength(m_text.substr(m_place, 4));
    m_place += length;
    return length > 0; // a control character has none either
}

std::string decodedText(std::string_view spelling)
{
    const std::string_view inner = spelling.size() >= 2 ? spelling.substr(1, spelling.size() - 2) : std::string_view();
    std::string text;
    text.reserve(inner.size());
    std::size_t place = 0;
    while (place < inner.size()) {
        const std::size_t escape = std::min(inner.find('\\', place), inner.size());
        text.append(inner, place, escape - place);
        place = escape;
        if (place + 1 >= inner.size())
            break;
        const char kind = inner[place + 1];
        if (kind != 'u') {
            constexpr std::string_view names = "bfnrt";
            constexpr std::string_view meanings = "\b\f\n\r\t";
            const std::size_t found = names.find(kind);
            text.push_back(found == std::string_view::npos ? kind : meanings[found]);
            place += 2;
            continue;
        }
        constexpr std::uint32_t replacement = 0xFFFD;
        std::uint32_t codePoint = escapedUnit(inner.substr(place)).value_or(replacement);
        place += 6;
        if (isHighSurrogate(codePoint)) {
            const auto low = escapedUnit(inner.substr(std::min(place, inner.size())));
            if (low && isLowSurrogate(*low)) {
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (*low - 0xDC00);
                place += 6;
            } else {
                codePoint = replacement;
            }
        } else if (isLowSurrogate(codePoint)) {
            codePoint = replacement;
        }
        appendUtf8(text, codePoint);
    }
    return text;
}

bool spellsText(std::string_view spelling, std::string_view text)
{
    if (spelling.size() < 2 || spelling.front() != '"')
        return false;
    if (spelling.size() == text.size() + 2)
        return spelling.substr(1, text.size()) == text;
    // No spelling is shorter than what it says.
    return spelling.size() > text.size() + 2 && spelling.find('\\') != std::string_view::npos && decodedText(spelling) == text;
}

std::string quotedText(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted.push_back('\\');
            quoted.push_back(character);
        } else if (character == '\n') {
            quoted.append("\\n");
        } else if (static_cast<unsigned char>(character) < 0x20) {
            quoted.append("\\u00");
            quoted.push_back(digits[static_cast<unsigned char>(character) >> 4]);
            quoted.push_back(digits[static_cast<unsigned char>(character) & 0xF]);
        } else {
            quoted.push_back(character);
        }
    }
    quoted.push_back('"');
    return quoted;
}

bool isUtf8(std::string_view text)
{
    std::size_t place = 0;
    while (place < text.size()) {
        if (static_cast<unsigned char>(text[place]) < 0x80) {
            ++place;
            continue;
        }
        const std::size_t length = multiByteLength(text.substr(place, 4));
        if (length == 0)
            return false;
        place += length;
    }
    return true;
}

} // namespace orvanta
