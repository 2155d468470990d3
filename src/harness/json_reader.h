#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

enum class JsonKind : std::uint8_t { none, null, boolean, number, text, array, object };

/// Reads JSON from front to back, strictly, without building anything: every value can be had as it is spelt, so that a
/// number is never rounded and a text never respelt. Needs no memory of its own. What it reads must outlive it.
///
/// After the first fault every operation fails; `failed` and `place` tell what and where.
class JsonReader {
public:
    /// The deepest nesting that is read. Nobody writes deeper by hand or needs it.
    static constexpr int deepestNesting = 512;

    explicit JsonReader(std::string_view text) : m_text(text) { }

    /// What the next value is, by its first character; `none` where no value can begin.
    [[nodiscard]] JsonKind kind();

    /// Passes over the next value, checking all of it, and gives it as it is spelt.
    [[nodiscard]] std::optional<std::string_view> take();

    /// Walks through the object that stands next. `visit` is given each key as it is spelt, with its quotation marks, must
    /// consume the value, and may return false to give up.
    template <typename Visit>
    [[nodiscard]] bool members(Visit visit)
    {
        if (!open('{'))
            return false;
        if (closes('}'))
            return true;
        do {
            const auto key = takeKey();
            if (!key || !visit(*key))
                return fail();
        } while (separates());
        return closes('}') || fail();
    }

    /// The same for an array; `visit` takes nothing.
    template <typename Visit>
    [[nodiscard]] bool elements(Visit visit)
    {
        if (!open('['))
            return false;
        if (closes(']'))
            return true;
        do {
            if (!visit())
                return fail();
        } while (separates());
        return closes(']') || fail();
    }

    /// True when nothing but white space is left.
    [[nodiscard]] bool isAtEnd();

    [[nodiscard]] bool failed() const { return m_failed; }
    [[nodiscard]] bool isTooDeep() const { return m_isTooDeep; }
    /// How many bytes have been read.
    [[nodiscard]] std::size_t place() const { return m_place; }

private:
    void skipSpace();
    [[nodiscard]] bool open(char bracket);
    [[nodiscard]] bool closes(char bracket);
    [[nodiscard]] bool separates();
    [[nodiscard]] std::optional<std::string_view> takeKey();
    [[nodiscard]] bool skipScalar();
    [[nodiscard]] bool skipText();
    [[nodiscard]] bool skipEscape();
    [[nodiscard]] bool skipMultiByteCharacter();
    [[nodiscard]] bool skipNumber();
    [[nodiscard]] bool skipDigits();
    [[nodiscard]] bool skipWord(std::string_view word);
    [[nodiscard]] bool isAt(char character) const { return m_place < m_text.size() && m_text[m_place] == character; }
    bool fail()
    {
        m_failed = true;
        return false;
    }

    std::string_view m_text;
    std::size_t m_place = 0;
    int m_depth = 0;
    bool m_failed = false;
    bool m_isTooDeep = false;
};

/// What the text `spelling` (with its quotation marks, as a JsonReader gave it) says, in UTF-8. Half a surrogate pair,
/// which programs that count in UTF-16 leave when they cut a text, becomes U+FFFD.
[[nodiscard]] std::string decodedText(std::string_view spelling);

/// Whether the value `spelling` is the text `text`, which must need no escapes.
[[nodiscard]] bool spellsText(std::string_view spelling, std::string_view text);

/// `text`, in UTF-8, as JSON spells it.
[[nodiscard]] std::string quotedText(std::string_view text);

/// Whether all of `text` is UTF-8.
[[nodiscard]] bool isUtf8(std::string_view text);

} // namespace orvanta
