#include "platform/portable/stored_object.h"

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

/// Qt's own decoding drops a byte order mark at the beginning; a text may well begin with that character.
QString decoded(const std::string& utf8)
{
    const QByteArrayView bytes(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (!bytes.startsWith(byteOrderMark))
        return QString::fromUtf8(bytes);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

/// Reads one value that is known to be JSON, without building anything that has none of our types.
class ValueReader : public Grammar {
public:
    bool null() override { return foreign(); }
    bool boolean(bool) override { return foreign(); }
    bool number_integer(number_integer_t) override { return foreign(); }
    bool number_unsigned(number_unsigned_t) override { return foreign(); }
    bool number_float(number_float_t, const string_t&) override { return foreign(); }
    bool string(string_t& text) override
    {
        switch (m_place) {
        case Place::outermost:
            m_value = QByteArray(text.data(), static_cast<qsizetype>(text.size()));
            return true;
        case Place::array:
            std::get<QStringList>(m_value).append(decoded(text));
            return true;
        case Place::object:
            return encodedData(text);
        }
        return foreign();
    }
    bool start_array(std::size_t) override
    {
        if (m_place != Place::outermost)
            return foreign();
        m_place = Place::array;
        m_value = QStringList();
        return true;
    }
    bool start_object(std::size_t) override
    {
        if (m_place != Place::outermost)
            return foreign();
        m_place = Place::object;
        return true;
    }
    bool key(string_t& text) override
    {
        // A second member makes it somebody else's object.
        return std::exchange(m_hasMember, true) || text != "base64" ? foreign() : true;
    }

    [[nodiscard]] StoredValue take() { return std::move(m_value); }

private:
    enum class Place { outermost, array, object };

    bool foreign()
    {
        m_value = ForeignValue();
        return false;
    }

    bool encodedData(const std::string& text)
    {
        const QByteArray encoded(text.data(), static_cast<qsizetype>(text.size()));
        auto data = QByteArray::fromBase64Encoding(encoded, QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        if (!data)
            return foreign();
        m_value = std::move(data.decoded);
        return true;
    }

    StoredValue m_value = ForeignValue();
    Place m_place = Place::outermost;
    bool m_hasMember = false;
};

StoredValue readValue(QByteArrayView text)
{
    ValueReader reader;
    json::sax_parse(text.begin(), text.end(), &reader);
    return reader.take();
}

void appendQuoted(QByteArray& text, std::string&& utf8)
{
    const bool isPlain = std::ranges::all_of(utf8, [](char unit) { return unit >= ' ' && unit <= '~' && unit != '"' && unit != '\\'; });
    if (isPlain) {
        text.append('"').append(utf8.data(), static_cast<qsizetype>(utf8.size())).append('"');
        return;
    }
    const std::string quoted = json(std::move(utf8)).dump(-1, ' ', false, json::error_handler_t::replace);
    text.append(quoted.data(), static_cast<qsizetype>(quoted.size()));
}

/// UTF-8 of any text: what is not Unicode in it becomes U+FFFD, where Qt would put a question mark.
std::string encoded(const QString& text)
{
    if (text.isValidUtf16())
        return text.toStdString();
    QString mended = text;
    for (qsizetype i = 0; i < mended.size(); ++i) {
        const QChar unit = mended.at(i);
        if (!unit.isSurrogate())
            continue;
        if (unit.isHighSurrogate() && i + 1 < mended.size() && mended.at(i + 1).isLowSurrogate())
            ++i;
        else
            mended[i] = QChar::ReplacementCharacter;
    }
    return mended.toStdString();
}

QByteArray quotedKey(const QString& key)
{
    QByteArray text;
    appendQuoted(text, encoded(key));
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
        appendQuoted(text, encoded(element));
    }
    return text.append("\n    ]");
}

QByteArray written(const QByteArray& value)
{
    if (!value.isValidUtf8())
        return R"({"base64": ")"_ba + value.toBase64() + R"("})"_ba;
    QByteArray text;
    appendQuoted(text, value.toStdString());
    return text;
}

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

} // namespace

StoredObject::StoredObject() : m_text("{}"_ba) { }

std::expected<StoredObject, StoredObjectError> parseStoredObject(const QByteArray& bytes)
{
    const auto error = [](const QString& description) { return std::unexpected(StoredObjectError { description }); };
    if (bytes.size() > storedObjectLimit)
        return error(u"is larger than %1 MiB"_s.arg(storedObjectLimit / (1024 * 1024)));
    if (bytes.isEmpty())
        return error(u"is empty"_s);
    Grammar grammar;
    if (!json::sax_parse(bytes.begin(), bytes.end(), &grammar)) {
        if (std::cmp_greater(grammar.errorPlace, bytes.size()))
            return error(u"is JSON that breaks off after %1 bytes"_s.arg(bytes.size()));
        return error(u"is not JSON (at byte %1 of %2)"_s.arg(grammar.errorPlace).arg(bytes.size()));
    }
    StoredObject object;
    object.m_text = bytes;
    if (!object.index())
        return error(u"is not one JSON object"_s);
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
    if (!spelling.contains('\\'))
        return false;
    const StoredValue text = readValue(spelling);
    const auto* bytes = std::get_if<QByteArray>(&text);
    return bytes && decoded(bytes->toStdString()) == key;
}

} // namespace

const StoredObject::Member* StoredObject::find(const QString& key) const
{
    const QByteArray quoted = quotedKey(key);
    const auto found = std::ranges::find_if(m_members.rbegin(), m_members.rend(), [&](const Member& member) { return spells(keyText(member), quoted, key); });
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
        if (valueText(*member) == spelling || readValue(valueText(*member)) == value)
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
            const QByteArrayView spelling = object.keyText(member);
            const QByteArray key = spelling.contains('\\') ? std::get<QByteArray>(readValue(spelling)) : spelling.sliced(1, spelling.size() - 2).toByteArray();
            values.insert(key, object.valueText(member));
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
