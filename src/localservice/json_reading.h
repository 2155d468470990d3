#pragma once

#include "localservice/iso_time.h"

#include <QByteArray>
#include <QString>

#include <nlohmann/json.hpp>

#include <expected>
#include <optional>

namespace orvanta::localservice {

using Json = nlohmann::ordered_json;

/// What is wrong with a body, in words for whoever wrote the client that sent it.
struct BadInput {
    QString description;
};

/// `body` as one JSON object. Refused: what is no JSON, other values, and anything nested deeper than any record of
/// this service (so that a hostile body costs no more than its own size).
[[nodiscard]] std::expected<Json, BadInput> readJsonObject(const QByteArray& body);

/// The members of one JSON object, read by key. The first member that is missing or of the wrong type is remembered,
/// and every read after it gives a default: a record is read straight through and judged once, at the end.
class ObjectReader {
public:
    /// `path` leads to the object within the body ("applications[2].") and stands before each key in a description.
    ObjectReader(const Json& object, QString path, std::optional<BadInput>& firstProblem);

    [[nodiscard]] QString text(const char* key);                        ///< a text
    [[nodiscard]] QString filledText(const char* key);                  ///< a text that is not empty
    [[nodiscard]] std::optional<QString> optionalText(const char* key); ///< a text; absent if missing or null
    [[nodiscard]] double seconds(const char* key);                      ///< a finite number, not negative
    [[nodiscard]] UtcTime time(const char* key);                        ///< a text that is an ISO 8601 time in UTC

    /// Calls `read(ObjectReader&)` for each element of the array of objects under `key`.
    template <typename Read>
    void objects(const char* key, Read read);
    /// The same, where the member may be missing or null.
    template <typename Read>
    void optionalObjects(const char* key, Read read);

    /// Remembers a problem with the member `key`, unless there is one already.
    void refuse(const char* key, const QString& reason);

private:
    [[nodiscard]] const Json* member(const char* key) const;

    const Json& m_object;
    QString m_path;
    std::optional<BadInput>& m_firstProblem;
};

template <typename Read>
void ObjectReader::objects(const char* key, Read read)
{
    const Json* array = member(key);
    if (!array || !array->is_array())
        return refuse(key, QStringLiteral("must be an array"));
    for (std::size_t index = 0; index < array->size() && !m_firstProblem; ++index) {
        const QString path = m_path + QString::fromUtf8(key) + u'[' + QString::number(index) + u']';
        if (!(*array)[index].is_object()) {
            m_firstProblem = BadInput { path + QStringLiteral(" must be an object") };
            return;
        }
        ObjectReader element((*array)[index], path + u'.', m_firstProblem);
        read(element);
    }
}

template <typename Read>
void ObjectReader::optionalObjects(const char* key, Read read)
{
    const Json* array = member(key);
    if (array && !array->is_null())
        objects(key, read);
}

} // namespace orvanta::localservice
