#include "harness/json_document.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// Builds the tree; remembers a key that stands twice.
class Builder {
public:
    explicit Builder(std::string_view bytes) : m_reader(bytes) { }

    /// As deep as the reader allows, so that recursion is bounded.
    [[nodiscard]] std::optional<JsonNode> value()
    {
        const JsonKind kind = m_reader.kind();
        JsonNode node { .kind = kind, .spelling = {} };
        if (kind == JsonKind::object) {
            if (!m_reader.members([&](std::string_view key) { return addMember(node, key); }) || repeats(node))
                return std::nullopt;
            return node;
        }
        if (kind == JsonKind::array) {
            const auto add = [&] {
                auto element = value();
                if (element)
                    node.elements.push_back(*std::move(element));
                return element.has_value();
            };
            return m_reader.elements(add) ? std::optional(std::move(node)) : std::nullopt;
        }
        const auto spelling = m_reader.take();
        if (!spelling)
            return std::nullopt;
        node.spelling = *spelling;
        return node;
    }

    [[nodiscard]] JsonReader& reader() { return m_reader; }
    [[nodiscard]] const std::optional<std::string>& repeatedKey() const { return m_repeatedKey; }

private:
    bool addMember(JsonNode& node, std::string_view key)
    {
        auto member = value();
        if (member) {
            member->key = key;
            node.members.push_back(*std::move(member));
        }
        return member.has_value();
    }

    bool repeats(const JsonNode& node)
    {
        std::vector<std::string> keys;
        keys.reserve(node.members.size());
        for (const auto& member : node.members)
            keys.push_back(decodedText(member.key));
        std::ranges::sort(keys);
        const auto twice = std::ranges::adjacent_find(keys);
        if (twice == keys.end())
            return false;
        m_repeatedKey = *twice;
        return true;
    }

    JsonReader m_reader;
    std::optional<std::string> m_repeatedKey;
};

qsizetype lineOf(std::string_view bytes, std::size_t place)
{
    return 1 + std::ranges::count(bytes.substr(0, place), '\n');
}

/// Appends `node` to `text`, indented for `depth`. The depth of what was parsed is bounded.
void print(std::string& text, const JsonNode& node, JsonOrder order, std::size_t depth)
{
    const auto newLine = [&text](std::size_t indentation) { text.append("\n").append(2 * indentation, ' '); };
    if (node.isObject() && !node.members.empty()) {
        std::vector<std::pair<std::string, const JsonNode*>> members;
        for (const auto& member : node.members)
            members.emplace_back(order == JsonOrder::sorted ? decodedText(member.key) : std::string(), &member);
        if (order == JsonOrder::sorted)
            std::ranges::sort(members, {}, &std::pair<std::string, const JsonNode*>::first);
        text.push_back('{');
        for (std::size_t index = 0; index < members.size(); ++index) {
            if (index > 0)
                text.push_back(',');
            newLine(depth + 1);
            text.append(members[index].second->key).append(": ");
            print(text, *members[index].second, order, depth + 1);
        }
        newLine(depth);
        text.push_back('}');
    } else if (node.isArray() && !node.elements.empty()) {
        text.push_back('[');
        for (std::size_t index = 0; index < node.elements.size(); ++index) {
            if (index > 0)
                text.push_back(',');
            newLine(depth + 1);
            print(text, node.elements[index], order, depth + 1);
        }
        newLine(depth);
        text.push_back(']');
    } else if (node.isObject()) {
        text.append("{}");
    } else if (node.isArray()) {
        text.append("[]");
    } else {
        text.append(node.spelling);
    }
}

} // namespace

JsonNode JsonNode::object()
{
    return { .kind = JsonKind::object, .spelling = {} };
}

JsonNode JsonNode::array()
{
    return { .kind = JsonKind::array, .spelling = {} };
}

JsonNode JsonNode::text(std::string_view text)
{
    return { .kind = JsonKind::text, .spelling = quotedText(text) };
}

JsonNode JsonNode::literal(JsonKind kind, std::string_view spelling)
{
    return { .kind = kind, .spelling = std::string(spelling) };
}

const JsonNode* JsonNode::find(std::string_view name) const
{
    const auto found = std::ranges::find_if(members, [name](const JsonNode& member) { return spellsText(member.key, name); });
    return found == members.end() ? nullptr : &*found;
}

JsonNode* JsonNode::find(std::string_view name)
{
    return const_cast<JsonNode*>(std::as_const(*this).find(name));
}

JsonNode& JsonNode::set(std::string_view name, JsonNode value)
{
    if (JsonNode* present = find(name)) {
        value.key = present->key;
        *present = std::move(value);
        return *present;
    }
    value.key = quotedText(name);
    members.push_back(std::move(value));
    return members.back();
}

void JsonNode::remove(std::string_view name)
{
    std::erase_if(members, [name](const JsonNode& member) { return spellsText(member.key, name); });
}

std::expected<JsonNode, QString> parseJsonObject(std::string_view bytes)
{
    if (bytes.empty())
        return std::unexpected(u"is empty"_s);
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return std::unexpected(u"begins with a byte order mark, which JSON does not allow"_s);
    Builder builder(bytes);
    auto node = builder.value();
    JsonReader& reader = builder.reader();
    if (const auto& key = builder.repeatedKey())
        return std::unexpected(u"holds the key \"%1\" twice in one object"_s.arg(QString::fromStdString(*key)));
    if (reader.isTooDeep())
        return std::unexpected(u"is nested more than %1 deep"_s.arg(JsonReader::deepestNesting));
    if (!node || !reader.isAtEnd())
        return std::unexpected(u"is not valid JSON (line %1)"_s.arg(lineOf(bytes, reader.place())));
    if (!node->isObject())
        return std::unexpected(u"is not a JSON object"_s);
    return *std::move(node);
}

std::string prettyJson(const JsonNode& node, JsonOrder order)
{
    std::string text;
    print(text, node, order, 0);
    text.push_back('\n');
    return text;
}

} // namespace orvanta
