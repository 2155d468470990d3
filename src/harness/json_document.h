#pragma once

#include "harness/json_reader.h"

#include <QString>

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// A value of somebody else's JSON, kept as it is spelt: no number is rounded, no text respelt, and members stay in their
/// order. A plain tree.
struct JsonNode {
    JsonKind kind = JsonKind::null;
    std::string spelling = "null";       ///< of a value that is neither array nor object
    std::string key = {};                ///< of an object's member, as it is spelt, with its quotation marks
    std::vector<JsonNode> members = {};  ///< of an object
    std::vector<JsonNode> elements = {}; ///< of an array

    [[nodiscard]] static JsonNode object();
    [[nodiscard]] static JsonNode array();
    [[nodiscard]] static JsonNode text(std::string_view text);
    [[nodiscard]] static JsonNode literal(JsonKind kind, std::string_view spelling);

    [[nodiscard]] bool isObject() const { return kind == JsonKind::object; }
    [[nodiscard]] bool isArray() const { return kind == JsonKind::array; }
    [[nodiscard]] bool isText() const { return kind == JsonKind::text; }

    /// The value under the key `name`; null if there is none, or this is no object. `name` must need no escapes.
    [[nodiscard]] const JsonNode* find(std::string_view name) const;
    [[nodiscard]] JsonNode* find(std::string_view name);

    /// Puts `value` under the key `name`, in place where the key is there, at the end otherwise.
    JsonNode& set(std::string_view name, JsonNode value);
    void remove(std::string_view name);

    bool operator==(const JsonNode&) const = default;
};

/// Reads the whole of `bytes` as one JSON object. Strict: what has a byte order mark, comments, trailing commas, anything
/// behind the object, the same key twice in one object (no two programs agree on which counts) or nesting beyond reason is
/// an error, in words that follow "it".
[[nodiscard]] std::expected<JsonNode, QString> parseJsonObject(std::string_view bytes);

enum class JsonOrder : std::uint8_t { asItStands, sorted };

/// `node` laid out for people: a member a line, indented by two spaces, with a line feed at the end.
[[nodiscard]] std::string prettyJson(const JsonNode& node, JsonOrder order);

} // namespace orvanta
