#include "platform/portable/stored_object.h"

#include <QCoreApplication>
#include <QHash>
#include <QStringDecoder>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;
using nlohmann::json;

namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

/// Takes every JSON text and keeps only the place where it stops being one.
class Grammar : public json::json_sax_t {
public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t place, const std::string&, const nlohmann::detail::exception&) override
    {
        errorPlace = place;
        return false;
    }

    std::size_t errorPlace = 0;
};

bool isSpace(char unit)
{
    return unit == ' ' || unit == '\t' || unit == '\n' || unit == '\r';
}

/// Walks over a text that is known to be JSON. Every step is bounded by the text's end all the same.
class Walk {
public:
    explicit Walk(QByteArrayView text) : m_text(text) { }

    [[nodiscard]] qsizetype place() const { return m_place; }
    [[nodiscard]] bool isAtEnd() const { return m_place >= m_text.size(); }
    [[nodiscard]] bool isAt(char unit) const { return !isAtEnd() && m_text.at(m_place) == unit; }

    bool take(char unit)
    {
        if (!isAt(unit))
            return false;
        ++m_place;
        return true;
    }

    void skipByteOrderMark()
    {
        if (m_text.startsWith(byteOrderMark))
            m_place = byteOrderMark.size();
    }

    void skipSpace()
    {
        while (!isAtEnd() && isSpace(m_text.at(m_place)))
            ++m_place;
    }

    void skipString()
    {
        ++m_place;
        while (!isAtEnd() && m_text.at(m_place) != '"')
            m_place += m_text.at(m_place) == '\\' ? 2 : 1;
        m_place = std::min(m_place + 1, m_text.size());
    }

    /// A text whole, anything else a character at a time.
    void skipPart()
    {
        if (isAt('"'))
            skipString();
        else
            ++m_place;
    }

    void skipValue()
    {
        qsizetype depth = 0;
        while (!isAtEnd()) {
            const char unit = m_text.at(m_place);
            if (unit == '"') {
                skipString();
                continue;
            }
            if (depth == 0 && (unit == ',' || unit == '}' || isSpace(unit)))
                return;
            if (unit == '{' || unit == '[')
                ++depth;
            else if (unit == '}' || unit == ']')
                --depth;
            ++m_place;
        }
    }

private:
    QByteArrayView m_text;
    qsizetype m_place = 0;
};

/// Qt's own decoding drops a byte order mark at the beginning; a text may well begin with that character.
QString decoded(QByteArrayView utf8)
{
    if (!utf8.startsWith(byteOrderMark))
        return QString::fromUtf8(utf8);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(utf8);
}

/// Reads a value that is known to be JSON and is no array, without building anything that has none of our types.
class ValueReader : public Grammar {
public:
    bool null() override { return foreign(); }
    bool boolean(bool) override { return foreign(); }
    bool number_integer(number_integer_t) override { return foreign(); }
    bool number_unsigned(number_unsigned_t) override { return foreign(); }
    bool number_float(number_float_t, const string_t&) override { return foreign(); }
    bool string(string_t& text) override
    {
        QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
        if (m_isInObject)
            return encodedData(bytes);
        m_value = std::move(bytes);
        return true;
    }
    bool start_array(std::size_t) override { return foreign(); }
    bool start_object(std::size_t) override { return std::exchange(m_isInObject, true) ? foreign() : true; }
    // A second member makes it somebody else's object.
    bool key(string_t& text) override { return std::exchange(m_hasMember, true) || text != "base64" ? foreign() : true; }

    [[nodiscard]] StoredValue take() { return std::move(m_value); }

private:
    bool foreign()
    {
        m_value = ForeignValue();
        return false;
    }

    bool encodedData(const QByteArray& text)
    {
        auto data = QByteArray::fromBase64Encoding(text, QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        if (!data)
            return foreign();
        m_value = std::move(data.decoded);
        return true;
    }

    StoredValue m_value = ForeignValue();
    bool m_isInObject = false;
    bool m_hasMember = false;
};

StoredValue readSingle(QByteArrayView text)
{
    ValueReader reader;
    json::sax_parse(text.begin(), text.end(), &reader);
    return reader.take();
}

/// The bytes of a JSON text; `spelling` has the quotation marks.
QByteArray bytesOf(QByteArrayView spelling)
{
    if (spelling.contains('\\'))
        return std::get<QByteArray>(readSingle(spelling));
    return spelling.sliced(1, spelling.size() - 2).toByteArray();
}

/// An array that is known to be JSON. The lists are long, and nearly all of their texts need no more than copying.
StoredValue readArray(QByteArrayView text)
{
    QStringList texts;
    Walk walk(text);
    walk.take('[');
    walk.skipSpace();
    if (walk.isAt(']'))
        return texts;
    do {
        walk.skipSpace();
        if (!walk.isAt('"'))
            return ForeignValue();
        const qsizetype begin = walk.place();
        walk.skipString();
        const QByteArrayView spelling = text.sliced(begin, walk.place() - begin);
        texts.append(spelling.contains('\\') ? decoded(bytesOf(spelling)) : decoded(spelling.sliced(1, spelling.size() - 2)));
        walk.skipSpace();
    } while (walk.take(','));
    return texts;
}

StoredValue readValue(QByteArrayView text)
{
    return text.startsWith('[') ? readArray(text) : readSingle(text);
}

/// Whether two JSON values are the same but for the space between their parts.
bool differOnlyInSpace(QByteArrayView left, QByteArrayView right)
{
    Walk l(left);
    Walk r(right);
    while (true) {
        l.skipSpace();
        r.skipSpace();
        if (l.isAtEnd() || r.isAtEnd())
            return l.isAtEnd() && r.isAtEnd();
        const qsizetype leftBegin = l.place();
        const qsizetype rightBegin = r.place();
        l.skipPart();
        r.skipPart();
        if (left.sliced(leftBegin, l.place() - leftBegin) != right.sliced(rightBegin, r.place() - rightBegin))
            return false;
    }
}

template <typename Units>
bool needsNoEscape(const Units& units)
{
    return std::ranges::all_of(units, [](auto unit) { return unit >= u' ' && unit <= u'~' && unit != u'"' && unit != u'\\'; });
}

void appendQuoted(QByteArray& text, const QByteArray& utf8)
{
    if (needsNoEscape(utf8)) {
        text.append('"').append(utf8).append('"');
        return;
    }
    const std::string quoted = json(utf8.toStdString()).dump(-1, ' ', false, json::error_handler_t::replace);
    text.append(quoted.data(), static_cast<qsizetype>(quoted.size()));
}

/// What is not Unicode in `string` becomes U+FFFD, where Qt would put a question mark.
void appendQuoted(QByteArray& text, const QString& string)
{
    if (needsNoEscape(string)) {
        text.append('"').append(string.toLatin1()).append('"');
        return;
    }
    QString mended = string;
    for (qsizetype i = 0; i < mended.size(); ++i) {
        const QChar unit = mended.at(i);
        if (!unit.isSurrogate())
            continue;
        if (unit.isHighSurrogate() && i + 1 < mended.size() && mended.at(i + 1).isLowSurrogate())
            ++i;
        else
            mended[i] = QChar::ReplacementCharacter;
    }
    appendQuoted(text, mended.toUtf8());
}

QByteArray quotedKey(const QString& key)
{
    QByteArray text;
    appendQuoted(text, key);
    return text;
}

/// `value` as JSON that stands as a member of the outermost object, laid out for a person to read.
QByteArray written(const QStringList& value)
{
    if (value.isEmpty())
        return "[]"_ba;
    QByteArray text = "["_ba;
    for (const QString& element : value) {
        text.append(text.size() == 1 ? "\n        " : ",\n        ");
        appendQuoted(text, element);
    }
    return text.append("\n    ]");
}

QByteArray written(const QByteArray& value)
{
    if (!value.isValidUtf8())
        return R"({"base64": ")"_ba + value.toBase64() + R"("})"_ba;
    QByteArray text;
    appendQuoted(text, value);
    return text;
}

} // namespace

StoredObject::StoredObject() : m_text("{}"_ba) { }

std::expected<StoredObject, StoredObjectError> parseStoredObject(const QByteArray& bytes)
{
    const auto error = [](const QString& description) { return std::unexpected(StoredObjectError { description }); };
    if (bytes.size() > storedObjectLimit)
        return error(QCoreApplication::translate("StoredFile", "is larger than %1 MiB").arg(storedObjectLimit / (1024LL * 1024)));
    if (bytes.isEmpty())
        return error(QCoreApplication::translate("StoredFile", "is empty"));
    Grammar grammar;
    if (!json::sax_parse(bytes.begin(), bytes.end(), &grammar)) {
        if (std::cmp_greater(grammar.errorPlace, bytes.size()))
            return error(QCoreApplication::translate("StoredFile", "is JSON that breaks off after %1 bytes").arg(bytes.size()));
        return error(QCoreApplication::translate("StoredFile", "is not JSON (at byte %1 of %2)").arg(grammar.errorPlace).arg(bytes.size()));
    }
    StoredObject object;
    object.m_text = bytes;
    if (!object.index())
        return error(QCoreApplication::translate("StoredFile", "is not one JSON object"));
    return object;
}

/// Finds the members. False if the text is another value than an object, or goes on behind it: the parser that has
/// judged the text takes a zero byte for its end.
bool StoredObject::index()
{
    m_members.clear();
    Walk walk(m_text);
    const auto here = [&walk] { return static_cast<std::uint32_t>(walk.place()); };
    walk.skipByteOrderMark();
    walk.skipSpace();
    if (!walk.take('{'))
        return false;
    do {
        Member member {};
        member.begin = here();
        walk.skipSpace();
        if (!walk.isAt('"'))
            break;
        member.keyBegin = here();
        walk.skipString();
        member.keyEnd = here();
        walk.skipSpace();
        walk.take(':');
        walk.skipSpace();
        member.valueBegin = here();
        walk.skipValue();
        member.valueEnd = here();
        walk.skipSpace();
        m_members.push_back(member);
    } while (walk.take(','));
    if (!walk.take('}'))
        return false;
    walk.skipSpace();
    return walk.isAtEnd();
}

QByteArrayView StoredObject::keyText(const Member& member) const
{
    return QByteArrayView(m_text).sliced(member.keyBegin, member.keyEnd - member.keyBegin);
}

QByteArrayView StoredObject::valueText(const Member& member) const
{
    return QByteArrayView(m_text).sliced(member.valueBegin, member.valueEnd - member.valueBegin);
}

namespace {

/// Whether the JSON text `spelling` is the key whose plainest spelling is `quoted`.
bool spells(QByteArrayView spelling, const QByteArray& quoted, const QString& key)
{
    if (spelling == quoted)
        return true;
    return spelling.contains('\\') && decoded(bytesOf(spelling)) == key;
}

} // namespace

const StoredObject::Member* StoredObject::find(const QString& key) const
{
    const QByteArray quoted = quotedKey(key);
    const auto found
        = std::ranges::find_if(m_members.rbegin(), m_members.rend(), [&](const Member& member) { return spells(keyText(member), quoted, key); });
    return found == m_members.rend() ? nullptr : &*found;
}

std::optional<StoredValue> StoredObject::value(const QString& key) const
{
    const Member* member = find(key);
    if (!member)
        return std::nullopt;
    return readValue(valueText(*member));
}

bool StoredObject::set(const QString& key, const StoredValue& value)
{
    QByteArray spelling;
    if (const auto* texts = std::get_if<QStringList>(&value))
        spelling = written(*texts);
    else if (const auto* data = std::get_if<QByteArray>(&value))
        spelling = written(*data);
    else
        return false;

    if (const Member* member = find(key)) {
        if (differOnlyInSpace(valueText(*member), spelling))
            return true;
        m_text.replace(member->valueBegin, member->valueEnd - member->valueBegin, spelling);
    } else {
        const QByteArray entry = "\n    "_ba + quotedKey(key) + ": "_ba + spelling;
        if (!m_members.empty()) {
            m_text.insert(m_members.back().valueEnd, ","_ba + entry);
        } else {
            const qsizetype inside = m_text.indexOf('{') + 1;
            const qsizetype end = m_text.indexOf('}', inside);
            m_text.replace(inside, end - inside, entry + '\n');
            if (!m_text.endsWith('\n'))
                m_text.append('\n');
        }
    }
    return index();
}

void StoredObject::remove(const QString& key)
{
    const QByteArray quoted = quotedKey(key);
    const auto leaves = [&](const Member& member) { return spells(keyText(member), quoted, key); };
    if (std::ranges::none_of(m_members, leaves))
        return;

    QByteArray rest = m_text.first(m_members.front().begin);
    bool isFirst = true;
    for (const Member& member : m_members) {
        if (leaves(member))
            continue;
        if (!std::exchange(isFirst, false))
            rest.append(',');
        rest.append(QByteArrayView(m_text).sliced(member.begin, member.valueEnd - member.begin));
    }
    qsizetype tail = m_members.back().valueEnd;
    if (isFirst)
        tail = m_text.indexOf('}', tail);
    m_text = rest.append(QByteArrayView(m_text).sliced(tail));
    // What is left of an indexed text has the same form, so that this cannot fail.
    std::ignore = index();
}

bool StoredObject::holdsTheSameAs(const StoredObject& other) const
{
    if (m_text == other.m_text)
        return true;
    const auto valuesByKey = [](const StoredObject& object) {
        QHash<QByteArray, QByteArrayView> values;
        for (const Member& member : object.m_members) {
            values.insert(bytesOf(object.keyText(member)), object.valueText(member));
        }
        return values;
    };
    const auto mine = valuesByKey(*this);
    const auto theirs = valuesByKey(other);
    if (mine.size() != theirs.size())
        return false;
    for (auto entry = mine.begin(); entry != mine.end(); ++entry) {
        const auto counterpart = theirs.find(entry.key());
        if (counterpart == theirs.end())
            return false;
        if (entry.value() == counterpart.value())
            continue;
        const StoredValue value = readValue(entry.value());
        if (std::holds_alternative<ForeignValue>(value) || value != readValue(counterpart.value()))
            return false;
    }
    return true;
}

} // namespace orvanta
